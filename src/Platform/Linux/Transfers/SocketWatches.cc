#include "Platform/Linux/Transfers/SocketWatches.h"

#include <sys/socket.h>
#include <unistd.h>

namespace tessaro::platform {

namespace {

int UvEvents(int curlPoll) {
  return ((curlPoll & CURL_POLL_IN) != 0 ? UV_READABLE : 0) | ((curlPoll & CURL_POLL_OUT) != 0 ? UV_WRITABLE : 0);
}

int CurlEvents(int status, int events) {
  if (status < 0) return CURL_CSELECT_ERR;
  return ((events & UV_READABLE) != 0 ? CURL_CSELECT_IN : 0) | ((events & UV_WRITABLE) != 0 ? CURL_CSELECT_OUT : 0);
}

}  // namespace

curl_socket_t SocketWatches::Open(const curl_sockaddr& address) {
  const int socket = ::socket(address.family, address.socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, address.protocol);
  if (socket < 0) return CURL_SOCKET_BAD;
  Add(socket, true);
  return socket;
}

void SocketWatches::Close(curl_socket_t socket) {
  watches_.erase(socket);
  ::close(socket);
}

void SocketWatches::Want(curl_socket_t socket, int curlPoll) {
  const auto found = watches_.find(socket);
  const bool isOver = curlPoll == CURL_POLL_REMOVE;
  if (isOver && found == watches_.end()) return;
  if (isOver && !found->second.isConnection) {
    watches_.erase(found);
    return;
  }
  Watch& watch = found != watches_.end() ? found->second : Add(socket, false);
  watch.wanted = isOver ? 0 : UvEvents(curlPoll);
  if (watch.wanted != 0 && watch.wanted != watch.watched) watch.Start(watch.wanted);
}

SocketWatches::Watch& SocketWatches::Add(curl_socket_t socket, bool isConnection) {
  Watch& watch = watches_.try_emplace(socket).first->second;
  watch.owner = this;
  watch.socket = socket;
  watch.isConnection = isConnection;
  watch.poll = MakeUvHandle<uv_poll_t>(&watch, uv_poll_init_socket, socket);
  return watch;
}

void SocketWatches::Watch::Start(int events) {
  watched = events;
  uv_poll_start(poll.get(), events,
                [](uv_poll_t* handle, int status, int happened) { OwnerOf<Watch>(handle).Happened(status, happened); });
}

void SocketWatches::Watch::Happened(int status, int events) {
  // libuv has stopped a watch that failed. One of a connection at rest is stopped here, because what it tells, mostly
  // that the server has hung up, is found out when the connection is needed again, and would be told all the time.
  const bool isAtRest = wanted == 0;
  if (status < 0 || isAtRest) watched = 0;
  if (isAtRest) {
    uv_poll_stop(poll.get());
  } else {
    owner->handler_(socket, CurlEvents(status, events));
  }
}

}  // namespace tessaro::platform
