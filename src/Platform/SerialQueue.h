#pragma once

#include <functional>
#include <memory>

namespace tessaro::platform {

// Runs tasks away from the main thread, one after the other, in the order in which they were posted, on a thread of its
// own that lives while there are tasks: a task that hangs delays only the tasks behind it.
//
// Post() may be called on any thread. Each task runs with an autorelease pool and must not throw C++ exceptions. Tasks
// run even when the queue is destroyed before them, unless the process ends.
class SerialQueue {
 public:
  using Task = std::function<void()>;

  SerialQueue();
  ~SerialQueue();
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  void Post(Task task) noexcept;

 private:
  struct Body;
  std::shared_ptr<Body> body_;
};

}  // namespace tessaro::platform
