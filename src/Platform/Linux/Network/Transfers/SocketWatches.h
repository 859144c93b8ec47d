#pragma once

#include <curl/curl.h>

#include <functional>
#include <unordered_map>

#include "Base/UvHandle.h"

namespace tessaro::platform {

// Watches libcurl's sockets on the event loop.
//
// libcurl lets go of a socket between two requests on the same connection. The watch of a connection stays until the
// socket is closed, so that a request on a connection that is already open costs no call to the system for being
// watched.
class SocketWatches {
 public:
  using Handler = std::function<void(curl_socket_t socket, int curlEvents)>;

  explicit SocketWatches(Handler handler) : handler_(std::move(handler)) {}

  // What libcurl wants to hear of, one of CURL_POLL_….
  void Want(curl_socket_t socket, int curlPoll);

  // Closes the socket of a connection. libcurl closes some others itself: its own pairs, and connections that it gives
  // up before they are made.
  void Close(curl_socket_t socket);

  void Clear() { watches_.clear(); }

 private:
  struct Watch {
    SocketWatches* owner;
    curl_socket_t socket;
    UvHandle<uv_poll_t> poll;
    bool isConnection = false;
    int wanted = 0;   // UV_READABLE, UV_WRITABLE
    int watched = 0;  // the same; stays when nothing is wanted

    void Start(int events);
    void Happened(int status, int events);
  };

  [[nodiscard]] Watch& Find(curl_socket_t socket);
  void LetGo(curl_socket_t socket);

  Handler handler_;
  std::unordered_map<curl_socket_t, Watch> watches_;
};

}  // namespace tessaro::platform
