#include "Platform/SerialQueue.h"

#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "Platform/Common/AutoreleaseScope.h"

namespace tessaro::platform {

// Shared with the thread, which is detached: the process must not wait at its end for a task that hangs.
struct SerialQueue::Body {
  std::mutex mutex;
  std::deque<Task> waiting;
  bool isRunning = false;

  static void Run(const std::shared_ptr<Body>& body) {
    const CocoaThread registration;
    while (const Task task = body->Next()) WithAutoreleasePool(task);
  }

  Task Next() {
    const std::lock_guard lock(mutex);
    if (waiting.empty()) {
      isRunning = false;
      return {};
    }
    Task task = std::move(waiting.front());
    waiting.pop_front();
    return task;
  }
};

SerialQueue::SerialQueue() : body_(std::make_shared<Body>()) {}
SerialQueue::~SerialQueue() = default;

void SerialQueue::Post(Task task) noexcept {
  const std::lock_guard lock(body_->mutex);
  body_->waiting.push_back(std::move(task));
  if (body_->isRunning) return;
  try {
    std::thread(Body::Run, body_).detach();
    body_->isRunning = true;
  } catch (const std::system_error&) {
    // The system is out of threads: the task waits for the next post to try again.
  }
}

}  // namespace tessaro::platform
