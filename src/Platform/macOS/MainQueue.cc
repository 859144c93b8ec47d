#include "Platform/MainQueue.h"

#include <dispatch/dispatch.h>
#include <pthread.h>

#include <cstdint>
#include <mutex>
#include <utility>

#include "Platform/Common/AutoreleaseScope.h"
#include "Platform/macOS/RunLoopPump.h"

// libdispatch's main queue, which the host's run loop drains in all common modes, also while menus are open. A host
// without a run loop, such as plain Node.js, gets one from the RunLoopPump. Any thread; no consent.
namespace tessaro::platform {

struct MainQueue::Body {
  std::mutex mutex;
  // Tasks remember the attachment they belong to: nothing can be taken back from the system's queue.
  std::uint64_t attachment = 0;
  bool isAttached = false;

  [[nodiscard]] bool IsCurrent(std::uint64_t number) {
    const std::lock_guard lock(mutex);
    return isAttached && attachment == number;
  }
};

namespace {

struct Posted {
  std::function<bool()> isWanted;
  MainQueue::Task task;

  static void Run(void* context) {
    const std::unique_ptr<Posted> posted(static_cast<Posted*>(context));
    // Objects that a task keeps alive die with it, and may need the pool.
    WithAutoreleasePool([&posted] {
      if (posted->isWanted()) posted->task();
      posted->task = nullptr;
    });
  }
};

}  // namespace

MainQueue& MainQueue::Shared() {
  static Forever<MainQueue> queue;
  return *queue;
}

MainQueue::MainQueue() : body_(std::make_shared<Body>()) {}
MainQueue::~MainQueue() = default;

bool MainQueue::IsMainThread() { return pthread_main_np() != 0; }

void MainQueue::Attach() {
  {
    const std::lock_guard lock(body_->mutex);
    if (std::exchange(body_->isAttached, true)) return;
    ++body_->attachment;
  }
  AtEnd(EndStage::MainQueue, [this] { Detach(); });
  RunLoopPump::Start();
}

void MainQueue::Detach() {
  {
    const std::lock_guard lock(body_->mutex);
    if (!std::exchange(body_->isAttached, false)) return;
  }
  RunLoopPump::Stop();
}

void MainQueue::Post(Task task) noexcept { PostDelayed(std::chrono::milliseconds(0), std::move(task)); }

void MainQueue::PostDelayed(std::chrono::milliseconds delay, Task task) noexcept {
  std::uint64_t number = 0;
  {
    const std::lock_guard lock(body_->mutex);
    if (!body_->isAttached) return;
    number = body_->attachment;
  }
  auto posted =
      std::make_unique<Posted>(Posted{[body = body_, number] { return body->IsCurrent(number); }, std::move(task)});
  if (delay.count() <= 0) return dispatch_async_f(dispatch_get_main_queue(), posted.release(), Posted::Run);
  const auto wait = std::chrono::duration_cast<std::chrono::nanoseconds>(delay).count();
  dispatch_after_f(dispatch_time(DISPATCH_TIME_NOW, wait), dispatch_get_main_queue(), posted.release(), Posted::Run);
}

}  // namespace tessaro::platform
