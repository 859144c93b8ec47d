#include "native/EpollSet.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

EpollSet::EpollSet() : descriptor_(epoll_create1(EPOLL_CLOEXEC)) {}

EpollSet::~EpollSet() {
  if (descriptor_ >= 0) close(descriptor_);
}

void EpollSet::Watch(const Events& wanted) {
  for (const auto& [descriptor, events] : watched_) {
    if (!wanted.contains(descriptor)) epoll_ctl(descriptor_, EPOLL_CTL_DEL, descriptor, nullptr);
  }
  for (const auto& [descriptor, events] : wanted) {
    epoll_event event{.events = events | EPOLLRDHUP, .data = {.fd = descriptor}};
    // The kernel drops closed descriptors; the same number may be another descriptor now.
    if (epoll_ctl(descriptor_, EPOLL_CTL_MOD, descriptor, &event) == 0 || errno != ENOENT) continue;
    epoll_ctl(descriptor_, EPOLL_CTL_ADD, descriptor, &event);
  }
  watched_ = wanted;
}

bool EpollSet::IsHungUp(int descriptor) const {
  std::array<epoll_event, 64> ready;
  const int count = epoll_wait(descriptor_, ready.data(), ready.size(), 0);
  return std::any_of(ready.begin(), ready.begin() + std::max(count, 0), [descriptor](const epoll_event& event) {
    return event.data.fd == descriptor && (event.events & (EPOLLHUP | EPOLLRDHUP | EPOLLERR)) != 0;
  });
}
