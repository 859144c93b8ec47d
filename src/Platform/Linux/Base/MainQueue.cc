#include "Platform/MainQueue.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <mutex>
#include <utility>
#include <vector>

#include "Base/TsLog.h"
#include "Base/UvHandle.h"
#include "Platform/Common/AutoreleaseScope.h"

namespace tessaro::platform {

namespace {

using Clock = std::chrono::steady_clock;

struct DelayedTask {
  Clock::time_point due;
  std::uint64_t order;  // of tasks that are due at the same moment
  MainQueue::Task task;
};

// For a heap whose front is the next task due.
bool IsLater(const DelayedTask& one, const DelayedTask& other) {
  return one.due != other.due ? one.due > other.due : one.order > other.order;
}

}  // namespace

struct MainQueue::Body {
  std::mutex mutex;
  std::deque<Task> ready;
  std::vector<DelayedTask> delayed;
  // Posted while the queue was detached. Their thread may be any, and what they own may belong to a script environment
  // that has ended: they are neither run nor destroyed.
  std::vector<Task> dropped;
  std::uint64_t posted = 0;
  // Both exist while the queue is attached.
  UvHandle<uv_async_t> wake;
  UvHandle<uv_timer_t> timer;

  // False when it was attached already.
  bool Attach() {
    const std::lock_guard lock(mutex);
    if (wake) return false;
    timer = MakeUvHandle<uv_timer_t>(this, uv_timer_init);
    wake = MakeUvHandle<uv_async_t>(this, uv_async_init, [](uv_async_t* handle) { OwnerOf<Body>(handle).Run(); });
    if (!wake) TsLogTextError("The event loop has no room for the main queue: nothing posted to it will run");
    return true;
  }

  void Detach() {
    std::deque<Task> waiting;
    std::vector<DelayedTask> later;
    {
      const std::lock_guard lock(mutex);
      wake.reset();
      timer.reset();
      waiting.swap(ready);
      later.swap(delayed);
    }
    // Outside the lock: what a task owns may post when it is destroyed.
    WithAutoreleasePool([&] {
      waiting.clear();
      later.clear();
    });
  }

  void Post(Task task) {
    const std::lock_guard lock(mutex);
    if (!wake) return dropped.push_back(std::move(task));
    ready.push_back(std::move(task));
    uv_async_send(wake.get());
  }

  void PostDelayed(std::chrono::milliseconds delay, Task task) {
    const std::lock_guard lock(mutex);
    if (!wake) return dropped.push_back(std::move(task));
    delayed.push_back({Clock::now() + delay, ++posted, std::move(task)});
    std::push_heap(delayed.begin(), delayed.end(), IsLater);
    uv_async_send(wake.get());
  }

 private:
  // Runs only the tasks that wait now: the loop's other work gets a turn before the tasks that these post.
  void Run() {
    for (Task& task : Take()) {
      // The task is destroyed inside the pool: so may be the objects that it owns.
      WithAutoreleasePool([&task] { std::exchange(task, nullptr)(); });
    }
    StartTimer();
  }

  std::deque<Task> Take() {
    const std::lock_guard lock(mutex);
    for (const auto now = Clock::now(); !delayed.empty() && delayed.front().due <= now; delayed.pop_back()) {
      std::pop_heap(delayed.begin(), delayed.end(), IsLater);
      ready.push_back(std::move(delayed.back().task));
    }
    return std::exchange(ready, {});
  }

  void StartTimer() {
    const std::lock_guard lock(mutex);
    if (!timer || delayed.empty()) return;
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(delayed.front().due - Clock::now());
    // The loop's clock has stood still while tasks ran. Without a delay, libuv 1.46 runs a timer in the turn of the one
    // that starts it.
    uv_update_time(uv_default_loop());
    uv_timer_start(
        timer.get(), [](uv_timer_t* handle) { OwnerOf<Body>(handle).Run(); },
        static_cast<std::uint64_t>(std::max<std::int64_t>(wait.count(), 1)), 0);
  }
};

MainQueue& MainQueue::Shared() {
  static Forever<MainQueue> queue;
  return *queue;
}

MainQueue::MainQueue() : body_(std::make_shared<Body>()) {}
MainQueue::~MainQueue() = default;

bool MainQueue::IsMainThread() { return getpid() == static_cast<pid_t>(syscall(SYS_gettid)); }

void MainQueue::Attach() {
  if (body_->Attach()) AtEnd(EndStage::MainQueue, [this] { Detach(); });
}

void MainQueue::Detach() { body_->Detach(); }
void MainQueue::Post(Task task) noexcept { body_->Post(std::move(task)); }
void MainQueue::PostDelayed(std::chrono::milliseconds delay, Task task) noexcept {
  body_->PostDelayed(delay, std::move(task));
}

}  // namespace tessaro::platform
