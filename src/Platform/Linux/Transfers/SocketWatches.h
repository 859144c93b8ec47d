#pragma once

#include <curl/curl.h>

#include <functional>
#include <unordered_map>

#include "Platform/Linux/UvHandle.h"

namespace tessaro::platform {

// Watches libcurl's sockets on the event loop.
//
// libcurl lets go of a socket between two requests on the same connection. The watch of a connection stays, so that a
// request on a connection that is already open costs no call to the system for being watched.
class SocketWatches {
 public:
  using Handler = std::function<void(curl_socket_t socket, int curlEvents)>;

  explicit SocketWatches(Handler handler) : handler_(std::move(handler)) {}

  // For libcurl's options: sockets of connections are opened and closed here.
  curl_socket_t Open(const curl_sockaddr& address);
  void Close(curl_socket_t socket);

  // What libcurl wants to hear of, one of CURL_POLL_…; any socket.
  void Want(curl_socket_t socket, int curlPoll);

  void Clear() { watches_.clear(); }

 private:
  struct Watch {
    SocketWatches* owner;
    curl_socket_t socket;
    bool isConnection;
    int wanted = 0;   // UV_READABLE, UV_WRITABLE
    int watched = 0;  // the same; stays more than what is wanted when nothing is wanted
    UvHandle<uv_poll_t> poll;

    void Start(int events);
    void Happened(int status, int events);
  };

  Watch& Add(curl_socket_t socket, bool isConnection);

  Handler handler_;
  std::unordered_map<curl_socket_t, Watch> watches_;
};

}  // namespace tessaro::platform
