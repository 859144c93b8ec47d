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

// Shared with the workers, which are detached: the end of the process must not wait for a task that hangs.
struct BackgroundQueue::Body {
  std::mutex mutex;
  std::condition_variable work;
  std::deque<Task> waiting;
  std::size_t workers = 0;
  std::size_t idle = 0;
  bool closed = false;

  static void Work(const std::shared_ptr<Body>& body) {
    const CocoaThread registration;
    while (const Task task = body->Next()) WithAutoreleasePool(task);
  }

  // Empty when the queue is closed.
  Task Next() {
    std::unique_lock lock(mutex);
    ++idle;
    work.wait(lock, [this] { return closed || !waiting.empty(); });
    --idle;
    if (closed) return {};
    Task task = std::move(waiting.front());
    waiting.pop_front();
    return task;
  }

  void Close() {
    const std::lock_guard lock(mutex);
    closed = true;
    waiting.clear();
    work.notify_all();
  }
};

BackgroundQueue& BackgroundQueue::Shared() {
  static BackgroundQueue queue;
  return queue;
}

BackgroundQueue::BackgroundQueue() : body_(std::make_shared<Body>()) {}
BackgroundQueue::~BackgroundQueue() { body_->Close(); }

void BackgroundQueue::Post(Task task) noexcept {
  const std::lock_guard lock(body_->mutex);
  body_->waiting.push_back(std::move(task));
  body_->work.notify_one();
  if (body_->waiting.size() <= body_->idle || body_->workers == kMostWorkers) return;
  try {
    std::thread(Body::Work, body_).detach();
    ++body_->workers;
  } catch (const std::system_error&) {
    // The system has no thread to give. The task waits for a worker that there is, or for the next post to try again.
  }
}

}  // namespace tessaro::platform
