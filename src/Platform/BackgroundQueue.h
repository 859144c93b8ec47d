#pragma once

#include <functional>
#include <memory>

namespace tessaro::platform {

// Takes work that may block away from the main thread: a few worker threads, started when they are needed.
//
// Post() may be called on any thread. Tasks start in the order in which they were posted and may overlap; each runs
// with an autorelease pool, must not throw C++ exceptions, and touches neither script nor AppKit. A task that is still
// running when the process ends is not waited for, and what waits is dropped.
class BackgroundQueue {
 public:
  using Task = std::function<void()>;

  static BackgroundQueue& Shared();

  void Post(Task task) noexcept;

  BackgroundQueue(const BackgroundQueue&) = delete;
  BackgroundQueue& operator=(const BackgroundQueue&) = delete;

 private:
  BackgroundQueue();
  ~BackgroundQueue();

  struct Body;
  std::shared_ptr<Body> body_;
};

}  // namespace tessaro::platform
