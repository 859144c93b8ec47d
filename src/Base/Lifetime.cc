#include "Base/Lifetime.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace {

struct Ending {
  EndStage stage;
  std::function<void()> close;
};

struct Endings {
  std::mutex mutex;
  std::vector<Ending> waiting;
};

Endings& All() {
  static Forever<Endings> endings;
  return *endings;
}

// Closing one object may make another, so the next one is chosen each time.
std::function<void()> TakeNext() {
  Endings& all = All();
  const std::lock_guard lock(all.mutex);
  const auto next = std::min_element(all.waiting.rbegin(), all.waiting.rend(),
                                     [](const Ending& one, const Ending& other) { return one.stage < other.stage; });
  if (next == all.waiting.rend()) return {};
  auto close = std::move(next->close);
  all.waiting.erase(std::next(next).base());
  return close;
}

}  // namespace

void AtEnd(EndStage stage, std::function<void()> close) {
  Endings& all = All();
  const std::lock_guard lock(all.mutex);
  all.waiting.push_back({stage, std::move(close)});
}

void EndAll() {
  while (const auto close = TakeNext()) close();
}
