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
  std::uint64_t order;  // tells tasks of the same moment apart
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
  std::uint64_t posted = 0;
  // Both exist while the queue is attached.
  UvHandle<uv_async_t> wake;
  UvHandle<uv_timer_t> timer;

  void Attach() {
    const std::lock_guard lock(mutex);
    if (wake) return;
    timer = MakeUvHandle<uv_timer_t>(this, uv_timer_init);
    wake = MakeUvHandle<uv_async_t>(this, uv_async_init, [](uv_async_t* handle) { OwnerOf<Body>(handle).Run(); });
    if (!wake) TsLogTextError("The event loop has no room for the main queue: nothing posted to it will run");
  }

  void Detach() {
    std::unique_lock lock(mutex);
    wake.reset();
    timer.reset();
    auto undone = std::exchange(ready, {});
    auto late = std::exchange(delayed, {});
    lock.unlock();
    // The objects that these tasks hold may post at their end, and may need a pool.
    WithAutoreleasePool([&] {
      undone.clear();
      late.clear();
    });
  }

  void Post(Task task) {
    const std::lock_guard lock(mutex);
    if (!wake) return;
    ready.push_back(std::move(task));
    uv_async_send(wake.get());
  }

  void PostDelayed(std::chrono::milliseconds delay, Task task) {
    const std::lock_guard lock(mutex);
    if (!wake) return;
    delayed.push_back({Clock::now() + delay, ++posted, std::move(task)});
    std::push_heap(delayed.begin(), delayed.end(), IsLater);
    uv_async_send(wake.get());
  }

 private:
  // Runs only what is waiting now: tasks that post again must leave the loop a turn for everything else.
  void Run() {
    for (Task& task : Take()) {
      // What a task keeps alive may go with it, and may need the pool for that.
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
    // The loop's clock stands still while tasks run.
    uv_update_time(uv_default_loop());
    uv_timer_start(
        timer.get(), [](uv_timer_t* handle) { OwnerOf<Body>(handle).Run(); },
        static_cast<std::uint64_t>(std::max<std::int64_t>(wait.count(), 0)), 0);
  }
};

MainQueue& MainQueue::Shared() {
  static Forever<MainQueue> queue;
  return *queue;
}

MainQueue::MainQueue() : body_(std::make_shared<Body>()) {}
MainQueue::~MainQueue() = default;

bool MainQueue::IsMainThread() { return getpid() == static_cast<pid_t>(syscall(SYS_gettid)); }

void MainQueue::Attach() { body_->Attach(); }
void MainQueue::Detach() { body_->Detach(); }
void MainQueue::Post(Task task) noexcept { body_->Post(std::move(task)); }
void MainQueue::PostDelayed(std::chrono::milliseconds delay, Task task) noexcept {
  body_->PostDelayed(delay, std::move(task));
}

}  // namespace tessaro::platform
