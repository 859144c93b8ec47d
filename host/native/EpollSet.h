#pragma once

#include <cstdint>
#include <map>

// Several descriptors as one.
class EpollSet {
 public:
  // Descriptors with the epoll events to wait for.
  using Events = std::map<int, std::uint32_t>;

  EpollSet();
  ~EpollSet();
  EpollSet(const EpollSet&) = delete;
  EpollSet& operator=(const EpollSet&) = delete;

  // Readable when one of those watched is ready.
  [[nodiscard]] int descriptor() const { return descriptor_; }

  // Watches exactly these. To be called again when one of them was closed and opened again.
  void Watch(const Events& wanted);

  // Whether the other end of a watched descriptor is gone.
  [[nodiscard]] bool IsHungUp(int descriptor) const;

 private:
  int descriptor_;
  Events watched_;
};
