#include "Platform/Linux/Network/Transfers/SocketWatches.h"

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

// Whether the socket is connected to another host; a socket that has been closed isn't.
bool IsConnection(curl_socket_t socket) {
  sockaddr_storage peer{};
  socklen_t length = sizeof peer;
  if (getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &length) != 0) return false;
  return peer.ss_family == AF_INET || peer.ss_family == AF_INET6;
}

}  // namespace

void SocketWatches::Want(curl_socket_t socket, int curlPoll) {
  if (curlPoll == CURL_POLL_REMOVE) return Release(socket);
  Watch& watch = Find(socket);
  watch.wanted = UvEvents(curlPoll);
  // Without a watch the transfer ends by its deadline.
  if (watch.poll && watch.wanted != 0 && watch.wanted != watch.watched) watch.Start(watch.wanted);
}

void SocketWatches::Close(curl_socket_t socket) {
  watches_.erase(socket);
  ::close(socket);
}

SocketWatches::Watch& SocketWatches::Find(curl_socket_t socket) {
  const auto [place, isNew] = watches_.try_emplace(socket);
  Watch& watch = place->second;
  if (isNew) {
    watch.owner = this;
    watch.socket = socket;
    watch.poll = MakeUvHandle<uv_poll_t>(&watch, uv_poll_init_socket, socket);
  }
  return watch;
}

void SocketWatches::Release(curl_socket_t socket) {
  const auto found = watches_.find(socket);
  if (found == watches_.end()) return;
  Watch& watch = found->second;
  watch.wanted = 0;
  watch.isConnection = watch.isConnection || IsConnection(socket);
  if (!watch.isConnection) watches_.erase(found);
}

void SocketWatches::Watch::Start(int events) {
  watched = events;
  uv_poll_start(poll.get(), events,
                [](uv_poll_t* handle, int status, int happened) { OwnerOf<Watch>(handle).Happened(status, happened); });
}

void SocketWatches::Watch::Happened(int status, int events) {
  // libuv has stopped a watch that failed. The watch of an idle connection is stopped here: it mostly reports that the
  // server has hung up, would report that again in every turn, and libcurl notices when it needs the connection again.
  const bool isIdle = wanted == 0;
  if (status < 0 || isIdle) watched = 0;
  if (isIdle) {
    uv_poll_stop(poll.get());
  } else {
    owner->handler_(socket, CurlEvents(status, events));
  }
}

}  // namespace tessaro::platform
