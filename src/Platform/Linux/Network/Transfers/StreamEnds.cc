// Corrects how libcurl 7.88 takes the end of HTTP/2 streams.
//
// A stream that the server resets without naming an error is regular where the body has its whole length: Node.js and
// others reset streams when they need no more of the request. libcurl drops the part of the response that it has not
// read by then, and takes a body without a length for whole. It also takes a connection that nghttp2 gives up, because
// the server violates the protocol, for the regular end of a body.
//
// libcurl installs its callbacks through the function below; this shared object comes before nghttp2 in libcurl's
// symbol lookup, so its definition is called.

#include <curl/curl.h>
#include <dlfcn.h>
#include <nghttp2/nghttp2.h>

#include "Platform/Linux/Network/Transfers/Transfer.h"

namespace {

using tessaro::platform::Transfer;

nghttp2_on_frame_recv_callback onFrameReceived = nullptr;

// Before nghttp2 counts the stream as ended.
int BeginFrame(nghttp2_session* session, const nghttp2_frame_hd* header, void*) {
  const bool isReset = header->type == NGHTTP2_RST_STREAM;
  if (!isReset || nghttp2_session_get_stream_remote_close(session, header->stream_id) != 0) return 0;
  // libcurl's data of a stream is the easy handle.
  CURL* const easy = nghttp2_session_get_stream_user_data(session, header->stream_id);
  Transfer* transfer = nullptr;
  if (easy) curl_easy_getinfo(easy, CURLINFO_PRIVATE, &transfer);
  if (transfer) transfer->NoteReset();
  return 0;
}

// Without the frame, libcurl reads all that it has of the stream, and then sees that the stream is closed.
int ReceivedFrame(nghttp2_session* session, const nghttp2_frame* frame, void* user) {
  const bool isReset = frame->hd.type == NGHTTP2_RST_STREAM && frame->rst_stream.error_code == NGHTTP2_NO_ERROR;
  return isReset ? 0 : onFrameReceived(session, frame, user);
}

int SentFrame(nghttp2_session*, const nghttp2_frame* frame, void*) {
  const bool isProtocolError = frame->hd.type == NGHTTP2_GOAWAY && frame->goaway.error_code != NGHTTP2_NO_ERROR;
  return isProtocolError ? NGHTTP2_ERR_CALLBACK_FAILURE : 0;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void nghttp2_session_callbacks_set_on_frame_recv_callback(
    nghttp2_session_callbacks* callbacks, nghttp2_on_frame_recv_callback callback) {
  static const auto set = reinterpret_cast<decltype(&nghttp2_session_callbacks_set_on_frame_recv_callback)>(
      dlsym(RTLD_NEXT, "nghttp2_session_callbacks_set_on_frame_recv_callback"));
  onFrameReceived = callback;
  set(callbacks, ReceivedFrame);
  nghttp2_session_callbacks_set_on_begin_frame_callback(callbacks, BeginFrame);
  nghttp2_session_callbacks_set_on_frame_send_callback(callbacks, SentFrame);
}
