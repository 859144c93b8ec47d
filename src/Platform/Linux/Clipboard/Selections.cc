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

constexpr int kReadCheckInterval = 100;  // milliseconds
constexpr int kTransferCheckInterval = 1000;

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

// Passes `begin` a callback that takes the result, on the thread, and waits for the result; `lost` if the thread has
// ended before.
template <typename Value, typename Begin>
Value Selections::Wait(Begin begin, Value lost) {
  auto promise = std::make_shared<std::promise<Value>>();
  auto result = promise->get_future();
  Post([begin = std::move(begin), promise = std::move(promise)] {
    begin([promise](Value value) { promise->set_value(std::move(value)); });
  });
  try {
    return result.get();
  } catch (const std::future_error&) {
    return lost;
  }
}

bool Selections::Take(const std::string& selection, SelectionOffer offer) {
  auto shared = std::make_shared<const SelectionOffer>(std::move(offer));
  return Wait([this, selection, shared](auto reply) { reply(server_.Take(connection_.Atom(selection), shared)); },
              false);
}

bool Selections::Owns(const std::string& selection) {
  return Wait([this, selection](auto reply) { reply(server_.Owns(connection_.Atom(selection))); }, false);
}

Result<std::string> Selections::Read(const std::string& selection, const std::string& target, SelectionLimits limits) {
  return Wait(
      [=, this](auto reply) { reader_.Begin(connection_.Atom(selection), connection_.Atom(target), limits, reply); },
      Result<std::string>(Fail(kNoAnswer, "the display has gone")));
}

Result<std::vector<std::string>> Selections::Targets(const std::string& selection, SelectionLimits limits) {
  const auto atoms = Read(selection, "TARGETS", limits);
  if (!atoms && atoms.error().code == kNoAnswer) return tl::unexpected(atoms.error());
  if (!atoms) return {};
  return Wait([this, &atoms](auto reply) { reply(NamesOf(*atoms)); }, std::vector<std::string>());
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
      WaitForEvents();
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

void Selections::WaitForEvents() {
  int deadline = server_.IsBusy() ? kTransferCheckInterval : -1;
  if (reader_.IsBusy()) deadline = kReadCheckInterval;
  std::array<pollfd, 2> ready{{{xcb_get_file_descriptor(connection_.get()), POLLIN, 0}, {wake_.get(), POLLIN, 0}}};
  poll(ready.data(), ready.size(), deadline);
  std::uint64_t count = 0;
  static_cast<void>(!read(wake_.get(), &count, sizeof count));
}

}  // namespace tessaro::platform
