#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace tessaro::platform {

// Runs `work` on a queue and waits for its result, for at most `limit`. After that the result is nothing, while `work`
// goes on, and must own everything that it uses.
template <typename Value, typename Queue>
[[nodiscard]] std::optional<Value> WithDeadline(Queue& queue, std::chrono::milliseconds limit,
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
