#include "Platform/SerialQueue.h"

#include <deque>
#include <mutex>
#include <utility>

#include "Platform/BackgroundQueue.h"
#include "Platform/Common/AutoreleaseScope.h"

namespace tessaro::platform {

struct SerialQueue::Body {
  std::mutex mutex;
  std::deque<Task> waiting;
  bool isRunning = false;

  static void Run(const std::shared_ptr<Body>& body) {
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
  {
    const std::lock_guard lock(body_->mutex);
    body_->waiting.push_back(std::move(task));
    if (std::exchange(body_->isRunning, true)) return;
  }
  BackgroundQueue::Shared().Post([body = body_] { Body::Run(body); });
}

}  // namespace tessaro::platform
