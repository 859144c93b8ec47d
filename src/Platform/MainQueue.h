#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "Base/Lifetime.h"

namespace tessaro::platform {

// Brings work to the main thread, which runs the application's event loop.
//
// Post() may be called on any thread, PostDelayed() too. Tasks run on the main thread in the order in which they were
// posted, on a later turn of the loop, never inside Post(), each with an autorelease pool. They must not throw C++
// exceptions; an Objective-C exception ends the task and is logged.
//
// Waiting tasks do not keep the process alive. Tasks that have not run when the queue is detached are destroyed there,
// before the services that they may use; tasks that are posted later are never run.
class MainQueue {
 public:
  using Task = std::function<void()>;

  static MainQueue& Shared();

  // Whether the caller runs on the process's main thread; needs no attached queue.
  [[nodiscard]] static bool IsMainThread();

  // Joins the event loop, and leaves it, which also happens when the script environment ends. Main thread only;
  // attaching twice is allowed, and so is detaching twice.
  void Attach();
  void Detach();

  [[nodiscard]] bool IsCurrent() const { return IsMainThread(); }

  void Post(Task task) noexcept;
  void PostDelayed(std::chrono::milliseconds delay, Task task) noexcept;

  MainQueue(const MainQueue&) = delete;
  MainQueue& operator=(const MainQueue&) = delete;

 private:
  friend class Forever<MainQueue>;

  MainQueue();
  ~MainQueue();

  struct Body;
  std::shared_ptr<Body> body_;
};

}  // namespace tessaro::platform
