#include "Platform/Linux/Network/Transfers/Failure.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace tessaro::platform {

namespace {

struct Meaning {
  CURLcode code;
  int number;  // in NSURLErrorDomain
  const char* text;
};

constexpr Meaning kUnknown = {CURLE_OK, -1, "The operation couldn't be completed."};

constexpr Meaning kMeanings[] = {
    {CURLE_URL_MALFORMAT, -1000, "bad URL"},
    {CURLE_OPERATION_TIMEDOUT, -1001, "The request timed out."},
    {CURLE_UNSUPPORTED_PROTOCOL, -1002, "unsupported URL"},
    {CURLE_COULDNT_RESOLVE_HOST, -1003, "A server with the specified hostname could not be found."},
    {CURLE_COULDNT_RESOLVE_PROXY, -1003, "A server with the specified hostname could not be found."},
    {CURLE_COULDNT_CONNECT, -1004, "Could not connect to the server."},
    {CURLE_SEND_ERROR, -1005, "The network connection was lost."},
    {CURLE_RECV_ERROR, -1005, "The network connection was lost."},
    {CURLE_PARTIAL_FILE, -1005, "The network connection was lost."},
    {CURLE_GOT_NOTHING, -1005, "The network connection was lost."},
    {CURLE_HTTP2, -1005, "The network connection was lost."},
    {CURLE_HTTP2_STREAM, -1005, "The network connection was lost."},
    {CURLE_TOO_MANY_REDIRECTS, -1007, "too many HTTP redirects"},
    {CURLE_WEIRD_SERVER_REPLY, -1011, "There was a bad response from the server."},
    {CURLE_BAD_CONTENT_ENCODING, -1015, "cannot decode raw data"},
    {CURLE_WRITE_ERROR, -1, "The response is too large."},
    {CURLE_OUT_OF_MEMORY, -1, "There is not enough memory for the request."},
    {CURLE_SSL_CONNECT_ERROR, -1200, "An SSL error has occurred and a secure connection to the server cannot be made."},
    {CURLE_SSL_CACERT_BADFILE, -1200,
     "An SSL error has occurred and a secure connection to the server cannot be made."},
    {CURLE_PEER_FAILED_VERIFICATION, -1202, "The certificate for this server is invalid."},
};

const Meaning& MeaningOf(CURLcode code) {
  const auto* found = std::find_if(std::begin(kMeanings), std::end(kMeanings),
                                   [code](const Meaning& meaning) { return meaning.code == code; });
  return found != std::end(kMeanings) ? *found : kUnknown;
}

}  // namespace

Failure DescribeFailure(CURLcode code, std::string_view url, std::string_view detail) {
  const Meaning& meaning = MeaningOf(code);
  std::string text = "Error Domain=NSURLErrorDomain Code=" + std::to_string(meaning.number) + " \"" + meaning.text;
  text.append("\" UserInfo={NSErrorFailingURLStringKey=").append(url);
  text.append(", NSLocalizedDescription=").append(meaning.text);
  text.append(", NSUnderlyingError=").append(detail.empty() ? curl_easy_strerror(code) : detail);
  return {meaning.number, text + "}"};
}

}  // namespace tessaro::platform
