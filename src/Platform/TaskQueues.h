#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "Base/Lifetime.h"

// Queues that take tasks away from the main thread. A queue's threads live while it has tasks.
//
// Post() may be called on any thread. Tasks start in the order in which they were posted, each with an autorelease
// pool; they must not throw C++ exceptions, and touch neither script nor AppKit.
namespace tessaro::platform {

class TaskQueue {
 public:
  using Task = std::function<void()>;

  explicit TaskQueue(std::size_t mostThreads);
  ~TaskQueue();
  TaskQueue(const TaskQueue&) = delete;
  TaskQueue& operator=(const TaskQueue&) = delete;

  void Post(Task task) noexcept;

  // Destroys the tasks that have not started.
  void Clear() noexcept;

 private:
  struct Body;
  std::shared_ptr<Body> body_;
};

// Runs one task after the other: a task that hangs delays only the tasks behind it. Tasks run even when the queue is
// destroyed before them, unless the process ends.
class SerialQueue : public TaskQueue {
 public:
  SerialQueue() : TaskQueue(1) {}
};

// For work that needs the processor or a disk: tasks overlap. Jobs that wait for another process or a server belong to
// the event loop or to a SerialQueue: a few of them would hold all threads. When the script environment ends, waiting
// tasks are destroyed; nothing waits for one that is running.
class BackgroundQueue : public TaskQueue {
 public:
  static BackgroundQueue& Shared() {
    static Forever<BackgroundQueue> queue;
    return *queue;
  }

  BackgroundQueue() : TaskQueue(kMostThreads) {}

  static constexpr EndStage kEnd = EndStage::Services;
  void Close() { Clear(); }

 private:
  static constexpr std::size_t kMostThreads = 4;
};

// Runs `work` on a queue and waits for its result, for at most `limit`. After that the result is nothing, while `work`
// goes on, and must own everything that it uses.
template <typename Value>
[[nodiscard]] std::optional<Value> WithDeadline(TaskQueue& queue, std::chrono::milliseconds limit,
                                                std::function<Value()> work) {
  struct Answer {
    std::mutex mutex;
    std::condition_variable changed;
    std::optional<Value> value;
  };
  auto answer = std::make_shared<Answer>();
  queue.Post([answer, work = std::move(work)] {
    Value value = work();
    const std::lock_guard lock(answer->mutex);
    answer->value = std::move(value);
    answer->changed.notify_one();
  });
  std::unique_lock lock(answer->mutex);
  answer->changed.wait_for(lock, limit, [&answer] { return answer->value.has_value(); });
  return std::move(answer->value);
}

}  // namespace tessaro::platform
