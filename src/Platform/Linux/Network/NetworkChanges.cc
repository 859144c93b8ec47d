#include "Platform/Linux/Network/NetworkChanges.h"

#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>

namespace tessaro::platform {

namespace {

constexpr std::uint32_t kGroups =
    RTMGRP_LINK | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR;

}  // namespace

NetworkChanges& NetworkChanges::Shared() {
  static Forever<NetworkChanges> changes;
  return *changes;
}

NetworkChanges::Subscription NetworkChanges::Listen(Listener listener) noexcept {
  if (!socket_ && !Open()) return {};
  const auto place = listeners_.insert(listeners_.end(), std::move(listener));
  return {&*place, [this, place](void*) { listeners_.erase(place); }};
}

void NetworkChanges::Close() noexcept {
  isClosed_ = true;
  poll_.reset();
  socket_ = {};
}

bool NetworkChanges::Open() noexcept {
  if (isClosed_) return false;
  FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = kGroups;
  if (!socket || bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return false;
  socket_ = std::move(socket);
  poll_ = MakeUvHandle<uv_poll_t>(this, uv_poll_init, socket_.get());
  if (!poll_) return false;
  uv_poll_start(poll_.get(), UV_READABLE,
                [](uv_poll_t* handle, int, int) { OwnerOf<NetworkChanges>(handle).Receive(); });
  return true;
}

void NetworkChanges::Receive() noexcept {
  std::array<char, 1> beginning;
  bool isChanged = false;
  // ENOBUFS, once, stands for dropped messages.
  while (recv(socket_.get(), beginning.data(), beginning.size(), MSG_TRUNC) >= 0 || errno == ENOBUFS) isChanged = true;
  if (!isChanged) return;
  for (const Listener& listener : listeners_) listener();
}

}  // namespace tessaro::platform
