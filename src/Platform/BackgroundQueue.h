#pragma once

#include <functional>
#include <memory>

#include "Base/Lifetime.h"

namespace tessaro::platform {

// Takes work that needs the processor or a disk away from the main thread, to a few worker threads. Jobs that wait for
// another process or a server belong to the event loop or to a SerialQueue: a few of them would hold all workers.
//
// Post() may be called on any thread. Tasks start in the order in which they were posted and may overlap; each runs
// with an autorelease pool, must not throw C++ exceptions, and touches neither script nor AppKit. When the script
// environment ends, waiting tasks are destroyed; nothing waits for one that is running.
class BackgroundQueue {
 public:
  using Task = std::function<void()>;

  static BackgroundQueue& Shared();

  void Post(Task task) noexcept;

  static constexpr EndStage kEnd = EndStage::Services;
  void Close();

  BackgroundQueue(const BackgroundQueue&) = delete;
  BackgroundQueue& operator=(const BackgroundQueue&) = delete;

 private:
  friend class Forever<BackgroundQueue>;

  BackgroundQueue();
  ~BackgroundQueue();

  struct Body;
  std::shared_ptr<Body> body_;
};

}  // namespace tessaro::platform
