#include "Platform/Linux/Base/SessionBus.h"

#include <poll.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "Platform/Common/AutoreleaseScope.h"

namespace tessaro::platform {

namespace {

constexpr std::chrono::milliseconds kFirstRetry{250};
constexpr std::chrono::milliseconds kLastRetry{4000};
// The first request waits for the connection.
constexpr std::chrono::milliseconds kFirstPatience{2000};
// No request waits for a reconnection, but the event loop stands still.
constexpr std::chrono::milliseconds kPatience{50};
// The limit for one turn of the event loop: a process that floods the bus with requests must not stop all other work.
constexpr std::chrono::milliseconds kTurn{20};
// The deadline of calls without one of their own: those to the bus itself, which wait for its reply.
constexpr std::chrono::milliseconds kCallDeadline{1000};

int UvEvents(short events) {
  return ((events & POLLIN) != 0 ? UV_READABLE : 0) | ((events & POLLOUT) != 0 ? UV_WRITABLE : 0);
}

}  // namespace

SessionBus& SessionBus::Shared() {
  static Forever<SessionBus> bus;
  return *bus;
}

sdbus::IConnection* SessionBus::Connection() noexcept {
  // While a reconnection is due, asking must not hurry it: a dead bus would be tried at every question.
  if (!connection_ && !retry_ && !closed_ && !Connect(kFirstPatience)) return nullptr;
  return connection_.get();
}

SessionBus::Subscription SessionBus::Listen(Listener listener) noexcept {
  const auto place = listeners_.insert(listeners_.end(), std::move(listener));
  if (Connection() != nullptr) {
    place->connected();
  } else {
    ScheduleReconnection();
  }
  return {&*place, [this, place](void*) { listeners_.erase(place); }};
}

void SessionBus::Close() noexcept {
  closed_ = true;
  Disconnect();
  retry_.reset();
}

// libsystemd waits 90 seconds for the bus's greeting, and nothing can shorten that: let a thread wait.
SessionBus::Opening SessionBus::Open() {
  std::packaged_task<std::unique_ptr<sdbus::IConnection>()> open([] { return sdbus::createSessionBusConnection(); });
  Opening opening = open.get_future();
  std::thread(std::move(open)).detach();
  return opening;
}

bool SessionBus::Connect(std::chrono::milliseconds patience) noexcept {
  try {
    const bool isNew = !opening_.valid();
    if (isNew) opening_ = Open();
    if (opening_.wait_for(isNew ? patience : std::chrono::milliseconds{}) == std::future_status::timeout) {
      lastError_ = "The bus has taken the connection, but does not answer.";
      return false;
    }
    connection_ = opening_.get();
    connection_->setMethodCallTimeout(kCallDeadline);
    Watch();
    retryDelay_ = kFirstRetry;
    return true;
  } catch (const sdbus::Error& error) {
    lastError_ = error.getName() + ": " + error.getMessage();
  } catch (const std::system_error& error) {
    lastError_ = error.what();
  }
  connection_.reset();
  return false;
}

void SessionBus::Watch() {
  poll_ = MakeUvHandle<uv_poll_t>(this, uv_poll_init, connection_->getEventLoopPollData().fd);
  if (!poll_) throw std::system_error(std::make_error_code(std::errc::too_many_files_open), "watching the bus");
  timeout_ = MakeUvHandle<uv_timer_t>(this, uv_timer_init);
  prepare_ = MakeUvHandle<uv_prepare_t>(this, uv_prepare_init);
  // Any call may have queued messages or deadlines since the loop last waited.
  uv_prepare_start(prepare_.get(), [](uv_prepare_t* handle) { OwnerOf<SessionBus>(handle).Arm(); });
}

void SessionBus::Disconnect() noexcept {
  if (!connection_) return;
  for (const Listener& listener : listeners_) listener.disconnected();
  poll_.reset();
  timeout_.reset();
  prepare_.reset();
  connection_.reset();
}

void SessionBus::ScheduleReconnection() noexcept {
  if (closed_ || retry_ || listeners_.empty()) return;
  retryDelay_ = std::clamp(retryDelay_, kFirstRetry, kLastRetry);
  retry_ = MakeUvHandle<uv_timer_t>(this, uv_timer_init);
  uv_timer_start(
      retry_.get(),
      [](uv_timer_t* handle) {
        auto& bus = OwnerOf<SessionBus>(handle);
        bus.retry_.reset();
        if (bus.Connect(kPatience)) {
          WithAutoreleasePool([&bus] {
            for (const Listener& listener : bus.listeners_) listener.connected();
          });
        } else {
          bus.ScheduleReconnection();
        }
      },
      static_cast<std::uint64_t>(retryDelay_.count()), 0);
  retryDelay_ *= 2;
}

void SessionBus::Process() noexcept {
  bool isAlive = true;
  WithAutoreleasePool([&] {
    try {
      const auto end = std::chrono::steady_clock::now() + kTurn;
      while (connection_ && connection_->processPendingRequest() && std::chrono::steady_clock::now() < end) {
      }
    } catch (const sdbus::Error& error) {
      lastError_ = error.getName() + ": " + error.getMessage();
      isAlive = false;
    }
  });
  if (isAlive) return Arm();
  Disconnect();
  ScheduleReconnection();
}

void SessionBus::Arm() noexcept {
  if (!connection_) return;
  try {
    const auto data = connection_->getEventLoopPollData();
    uv_poll_start(poll_.get(), UvEvents(data.events),
                  [](uv_poll_t* handle, int, int) { OwnerOf<SessionBus>(handle).Process(); });
    const int milliseconds = data.getPollTimeout();
    // Without a delay, libuv 1.46 runs a timer in the turn of the one that starts it: a flood would hold the loop.
    if (milliseconds < 0) {
      uv_timer_stop(timeout_.get());
      return;
    }
    uv_timer_start(
        timeout_.get(), [](uv_timer_t* handle) { OwnerOf<SessionBus>(handle).Process(); },
        static_cast<std::uint64_t>(std::max(milliseconds, 1)), 0);
  } catch (const sdbus::Error& error) {
    lastError_ = error.getName() + ": " + error.getMessage();
    Disconnect();
    ScheduleReconnection();
  }
}

}  // namespace tessaro::platform
