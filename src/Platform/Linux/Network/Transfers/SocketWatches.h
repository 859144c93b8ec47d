#pragma once

#include <curl/curl.h>

#include <functional>
#include <unordered_map>

#include "Base/UvHandle.h"

namespace tessaro::platform {

// Watches libcurl's sockets on the event loop.
//
// libcurl releases a socket between two requests on the same connection. The watch of a connection stays until the
// socket is closed, which saves each further request the system calls for a new watch.
class SocketWatches {
 public:
  using Handler = std::function<void(curl_socket_t socket, int curlEvents)>;

  explicit SocketWatches(Handler handler) : handler_(std::move(handler)) {}

  // The events that libcurl waits for, one of CURL_POLL_….
  void Want(curl_socket_t socket, int curlPoll);

  // Closes the socket of a connection. libcurl closes others itself: its socket pairs, and connections that it abandons
  // before they are established.
  void Close(curl_socket_t socket);

  void Clear() { watches_.clear(); }

 private:
  struct Watch {
    SocketWatches* owner;
    curl_socket_t socket;
    UvHandle<uv_poll_t> poll;
    bool isConnection = false;
    int wanted = 0;   // UV_READABLE, UV_WRITABLE
    int watched = 0;  // the same; stays while the connection is idle

    void Start(int events);
    void Happened(int status, int events);
  };

  [[nodiscard]] Watch& Find(curl_socket_t socket);
  void Release(curl_socket_t socket);

  Handler handler_;
  std::unordered_map<curl_socket_t, Watch> watches_;
};

}  // namespace tessaro::platform
