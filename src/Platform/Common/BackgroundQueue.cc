#include "Platform/BackgroundQueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "Platform/Common/AutoreleaseScope.h"

namespace tessaro::platform {

namespace {

constexpr std::size_t kMostWorkers = 4;

}  // namespace

// Shared with the workers, which are detached: the process must not wait at its end for a task that hangs.
struct BackgroundQueue::Body {
  std::mutex mutex;
  std::condition_variable work;
  std::deque<Task> waiting;
  std::size_t workers = 0;
  std::size_t idle = 0;

  static void Work(const std::shared_ptr<Body>& body) {
    const CocoaThread registration;
    for (;;) WithAutoreleasePool(body->Next());
  }

  Task Next() {
    std::unique_lock lock(mutex);
    ++idle;
    work.wait(lock, [this] { return !waiting.empty(); });
    --idle;
    Task task = std::move(waiting.front());
    waiting.pop_front();
    return task;
  }

  std::deque<Task> TakeAll() {
    const std::lock_guard lock(mutex);
    return std::exchange(waiting, {});
  }
};

BackgroundQueue& BackgroundQueue::Shared() {
  static Forever<BackgroundQueue> queue;
  return *queue;
}

BackgroundQueue::BackgroundQueue() : body_(std::make_shared<Body>()) {}
BackgroundQueue::~BackgroundQueue() = default;

void BackgroundQueue::Close() {
  // Outside the lock: destroying a task may post another.
  WithAutoreleasePool([this] { body_->TakeAll().clear(); });
}

void BackgroundQueue::Post(Task task) noexcept {
  const std::lock_guard lock(body_->mutex);
  body_->waiting.push_back(std::move(task));
  body_->work.notify_one();
  if (body_->waiting.size() <= body_->idle || body_->workers == kMostWorkers) return;
  try {
    std::thread(Body::Work, body_).detach();
    ++body_->workers;
  } catch (const std::system_error&) {
    // The system is out of threads: the task waits for an idle worker, or for the next post to try again.
  }
}

}  // namespace tessaro::platform
