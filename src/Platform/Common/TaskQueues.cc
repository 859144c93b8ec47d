#include "Platform/TaskQueues.h"

#include <deque>
#include <system_error>
#include <thread>

#include "Platform/Common/AutoreleaseScope.h"

namespace tessaro::platform {

// Shared with the threads, which are detached: the process must not wait at its end for a task that hangs.
struct TaskQueue::Body {
  explicit Body(std::size_t most) : mostThreads(most) {}

  const std::size_t mostThreads;
  std::mutex mutex;
  std::deque<Task> waiting;
  std::size_t threads = 0;

  static void Run(const std::shared_ptr<Body>& body) {
    const CocoaThread registration;
    while (const Task task = body->Next()) WithAutoreleasePool(task);
  }

  Task Next() {
    const std::lock_guard lock(mutex);
    if (waiting.empty()) {
      --threads;
      return {};
    }
    Task task = std::move(waiting.front());
    waiting.pop_front();
    return task;
  }
};

TaskQueue::TaskQueue(std::size_t mostThreads) : body_(std::make_shared<Body>(mostThreads)) {}
TaskQueue::~TaskQueue() = default;

void TaskQueue::Post(Task task) noexcept {
  const std::lock_guard lock(body_->mutex);
  body_->waiting.push_back(std::move(task));
  if (body_->threads == body_->mostThreads) return;
  try {
    std::thread(Body::Run, body_).detach();
    ++body_->threads;
  } catch (const std::system_error&) {
    // The system is out of threads: the task waits for a running one, or for the next post to try again.
  }
}

void TaskQueue::Clear() noexcept {
  WithAutoreleasePool([this] {
    std::unique_lock lock(body_->mutex);
    const std::deque<Task> cleared = std::exchange(body_->waiting, {});
    // Destroying a task may post another.
    lock.unlock();
  });
}

}  // namespace tessaro::platform
