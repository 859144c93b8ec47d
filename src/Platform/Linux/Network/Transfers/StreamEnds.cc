// Makes libcurl report HTTP/2 streams that end too early.
//
// libcurl 7.88 takes two things for the regular end of a body: a stream that the server resets without naming an error,
// and a connection that nghttp2 gives up because the server violates the protocol. It installs its callbacks through
// the function below; this shared object comes before nghttp2 in libcurl's symbol lookup, so its definition is called.

#include <dlfcn.h>
#include <nghttp2/nghttp2.h>

#include <cstdint>

namespace {

struct Stream {
  nghttp2_session* session;
  std::int32_t number;

  bool operator==(const Stream&) const = default;
};

nghttp2_on_stream_close_callback onStreamClose = nullptr;
// The stream that the current frame resets although its body has not ended.
Stream cutShort{};

int BeginFrame(nghttp2_session* session, const nghttp2_frame_hd* header, void*) {
  const bool isReset = header->type == NGHTTP2_RST_STREAM;
  const bool isOpen = isReset && nghttp2_session_get_stream_remote_close(session, header->stream_id) == 0;
  cutShort = isOpen ? Stream{session, header->stream_id} : Stream{};
  return 0;
}

int CloseStream(nghttp2_session* session, std::int32_t number, std::uint32_t errorCode, void* user) {
  const bool isCutShort = cutShort == Stream{session, number} && errorCode == NGHTTP2_NO_ERROR;
  return onStreamClose(session, number, isCutShort ? NGHTTP2_INTERNAL_ERROR : errorCode, user);
}

int SentFrame(nghttp2_session*, const nghttp2_frame* frame, void*) {
  const bool isProtocolError = frame->hd.type == NGHTTP2_GOAWAY && frame->goaway.error_code != NGHTTP2_NO_ERROR;
  return isProtocolError ? NGHTTP2_ERR_CALLBACK_FAILURE : 0;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void nghttp2_session_callbacks_set_on_stream_close_callback(
    nghttp2_session_callbacks* callbacks, nghttp2_on_stream_close_callback callback) {
  static const auto set = reinterpret_cast<decltype(&nghttp2_session_callbacks_set_on_stream_close_callback)>(
      dlsym(RTLD_NEXT, "nghttp2_session_callbacks_set_on_stream_close_callback"));
  onStreamClose = callback;
  set(callbacks, CloseStream);
  nghttp2_session_callbacks_set_on_begin_frame_callback(callbacks, BeginFrame);
  nghttp2_session_callbacks_set_on_frame_send_callback(callbacks, SentFrame);
}
