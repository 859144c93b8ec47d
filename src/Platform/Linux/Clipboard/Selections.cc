#include "Platform/Linux/Clipboard/Selections.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <future>
#include <memory>
#include <thread>
#include <utility>

#include "Base/Lifetime.h"

namespace tessaro::platform {

namespace {

constexpr int kLookAfterReads = 100;  // milliseconds
constexpr int kLookAfterTransfers = 1000;

constexpr std::size_t kMostTargets = 1000;

}  // namespace

Selections& Selections::Shared() {
  static Forever<Selections> selections;
  return *selections;
}

Selections::Selections()
    : wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      server_(connection_, [this](Task task) { Post(std::move(task)); }),
      reader_(connection_) {
  hasEnded_ = !isAvailable_;
  if (isAvailable_) std::thread([this] { Run(); }).detach();
}

// ---- Calls from other threads

void Selections::Post(Task task) {
  const std::lock_guard lock(mutex_);
  if (hasEnded_) return;
  tasks_.push_back(std::move(task));
  const std::uint64_t one = 1;
  static_cast<void>(!write(wake_.get(), &one, sizeof one));
}

// A task that the end of the thread has left undone breaks its promise, and the caller gets the empty result.
template <typename Function>
auto Selections::Call(Function function) {
  using Value = decltype(function());
  auto promise = std::make_shared<std::promise<Value>>();
  auto result = promise->get_future();
  Post([promise = std::move(promise), function = std::move(function)] { promise->set_value(function()); });
  try {
    return result.get();
  } catch (const std::future_error&) {
    return Value{};
  }
}

bool Selections::Take(const std::string& selection, SelectionOffer offer) {
  auto shared = std::make_shared<const SelectionOffer>(std::move(offer));
  return Call([this, selection, shared] { return server_.Take(connection_.Atom(selection), shared); });
}

bool Selections::Owns(const std::string& selection) {
  return Call([this, selection] { return server_.Owns(connection_.Atom(selection)); });
}

Result<std::string> Selections::Read(const std::string& selection, const std::string& target, SelectionLimits limits) {
  auto promise = std::make_shared<std::promise<Result<std::string>>>();
  auto result = promise->get_future();
  Post([this, selection, target, limits, promise = std::move(promise)] {
    reader_.Begin(connection_.Atom(selection), connection_.Atom(target), limits,
                  [promise](Result<std::string> value) { promise->set_value(std::move(value)); });
  });
  try {
    return result.get();
  } catch (const std::future_error&) {
    return Fail(kNoAnswer, "the display has gone");
  }
}

Result<std::vector<std::string>> Selections::Targets(const std::string& selection, SelectionLimits limits) {
  const auto atoms = Read(selection, "TARGETS", limits);
  if (!atoms && atoms.error().code == kNoAnswer) return tl::unexpected(atoms.error());
  if (!atoms) return {};
  return Call([this, &atoms] { return NamesOf(*atoms); });
}

std::vector<std::string> Selections::NamesOf(const std::string& atoms) {
  std::vector<xcb_atom_t> numbers(std::min(atoms.size() / sizeof(xcb_atom_t), kMostTargets));
  if (!numbers.empty()) std::memcpy(numbers.data(), atoms.data(), numbers.size() * sizeof(xcb_atom_t));
  std::vector<std::string> names;
  for (const xcb_atom_t number : numbers) {
    if (std::string name = connection_.NameOf(number); !name.empty()) names.push_back(std::move(name));
  }
  return names;
}

// ---- The thread

void Selections::Run() {
  while (connection_) {
    RunTasks();
    server_.DropLateTransfers();
    reader_.EndLateReads();
    xcb_flush(connection_.get());
    if (const XcbOwner<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
      Handle(*event);
    } else {
      Wait();
    }
  }
  reader_.EndAllReads();
  const std::lock_guard lock(mutex_);
  hasEnded_ = true;
  tasks_.clear();
}

void Selections::RunTasks() {
  std::unique_lock lock(mutex_);
  const auto tasks = std::exchange(tasks_, {});
  lock.unlock();
  for (const Task& task : tasks) task();
}

void Selections::Handle(const xcb_generic_event_t& event) {
  if (const auto* request = EventAs<xcb_selection_request_event_t>(event, XCB_SELECTION_REQUEST)) {
    server_.HandleRequest(*request);
  } else if (const auto* clear = EventAs<xcb_selection_clear_event_t>(event, XCB_SELECTION_CLEAR)) {
    server_.HandleClear(*clear);
  } else if (const auto* destroyed = EventAs<xcb_destroy_notify_event_t>(event, XCB_DESTROY_NOTIFY)) {
    server_.Forget(destroyed->window);
  } else if (const auto* notify = EventAs<xcb_selection_notify_event_t>(event, XCB_SELECTION_NOTIFY)) {
    reader_.HandleAnswer(*notify);
  } else if (const auto* property = EventAs<xcb_property_notify_event_t>(event, XCB_PROPERTY_NOTIFY)) {
    if (property->window == connection_.window()) {
      reader_.HandleProperty(*property);
    } else {
      server_.HandleProperty(*property);
    }
  }
}

void Selections::Wait() {
  int deadline = server_.IsBusy() ? kLookAfterTransfers : -1;
  if (reader_.IsBusy()) deadline = kLookAfterReads;
  std::array<pollfd, 2> ready{{{xcb_get_file_descriptor(connection_.get()), POLLIN, 0}, {wake_.get(), POLLIN, 0}}};
  poll(ready.data(), ready.size(), deadline);
  std::uint64_t count = 0;
  static_cast<void>(!read(wake_.get(), &count, sizeof count));
}

}  // namespace tessaro::platform
