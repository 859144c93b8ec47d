#include "Platform/Linux/Base/SessionBus.h"

#include <poll.h>
#include <systemd/sd-bus-protocol.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "Platform/Common/AutoreleaseScope.h"

namespace tessaro::platform {

namespace {

constexpr char kBus[] = "org.freedesktop.DBus";
constexpr char kBusPath[] = "/org/freedesktop/DBus";
constexpr std::chrono::milliseconds kNamesDeadline{300};
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

bool IsMissedDeadline(const sdbus::Error& error) {
  return error.getName() == SD_BUS_ERROR_TIMEOUT || error.getName() == SD_BUS_ERROR_NO_REPLY;
}

// Asks the bus itself. Raises sdbus::Error.
template <typename Answer, typename... Arguments>
Answer AskBus(sdbus::IConnection& bus, const char* method, const Arguments&... arguments) {
  Answer answer{};
  sdbus::createProxy(bus, kBus, kBusPath)
      ->callMethod(method)
      .onInterface(kBus)
      .withTimeout(kNamesDeadline)
      .withArguments(arguments...)
      .storeResultsTo(answer);
  return answer;
}

// Empty while the name has no owner.
std::string UniqueNameOf(sdbus::IConnection& bus, const std::string& name) noexcept {
  std::string owner;
  TryOnBus([&] { owner = AskBus<std::string>(bus, "GetNameOwner", name); });
  return owner;
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
  Result<void> processed;
  WithAutoreleasePool([&] {
    processed = TryOnBus([this] {
      const auto end = std::chrono::steady_clock::now() + kTurn;
      while (connection_ && connection_->processPendingRequest() && std::chrono::steady_clock::now() < end) {
      }
    });
  });
  processed ? Arm() : Lose(processed.error().message);
}

void SessionBus::Arm() noexcept {
  if (!connection_) return;
  const auto armed = TryOnBus([this] {
    const auto data = connection_->getEventLoopPollData();
    uv_poll_start(poll_.get(), UvEvents(data.events),
                  [](uv_poll_t* handle, int, int) { OwnerOf<SessionBus>(handle).Process(); });
    const int milliseconds = data.getPollTimeout();
    if (milliseconds < 0) return static_cast<void>(uv_timer_stop(timeout_.get()));
    // Without a delay, libuv 1.46 runs a timer in the turn of the one that starts it: a flood would hold the loop.
    uv_timer_start(
        timeout_.get(), [](uv_timer_t* handle) { OwnerOf<SessionBus>(handle).Process(); },
        static_cast<std::uint64_t>(std::max(milliseconds, 1)), 0);
  });
  if (!armed) Lose(armed.error().message);
}

void SessionBus::Lose(const std::string& reason) noexcept {
  lastError_ = reason;
  Disconnect();
  ScheduleReconnection();
}

void BusService::JoinBus() noexcept {
  if (std::exchange(hasJoined_, true)) return;
  const auto disappear = [this] {
    retry_.reset();
    Disappear();
  };
  subscription_ = SessionBus::Shared().Listen({[this] { TryToAppear(); }, disappear});
}

void BusService::LeaveBus() noexcept {
  subscription_ = {};
  retry_.reset();
  if (std::exchange(hasJoined_, false)) Disappear();
}

void BusService::TryToAppear() noexcept {
  try {
    Appear(*SessionBus::Shared().Connection());
    retryDelay_ = kFirstRetry;
  } catch (const sdbus::Error& error) {
    Disappear();
    if (!IsMissedDeadline(error)) return;
    retry_ = MakeUvHandle<uv_timer_t>(this, uv_timer_init);
    uv_timer_start(
        retry_.get(),
        [](uv_timer_t* handle) { WithAutoreleasePool([handle] { OwnerOf<BusService>(handle).TryToAppear(); }); },
        static_cast<std::uint64_t>(retryDelay_.count()), 0);
    retryDelay_ *= 2;
  }
}

bool HasOwner(const std::string& name) noexcept {
  auto* bus = SessionBus::Shared().Connection();
  bool hasOwner = false;
  if (bus != nullptr) TryOnBus([&] { hasOwner = AskBus<bool>(*bus, "NameHasOwner", name); });
  return hasOwner;
}

std::string OwnerIdentity(sdbus::IConnection& bus, const std::string& name) noexcept {
  const std::string owner = UniqueNameOf(bus, name);
  std::string identity;
  // Buses number their connections from the beginning.
  if (!owner.empty()) TryOnBus([&] { identity = AskBus<std::string>(bus, "GetId") + owner; });
  return identity;
}

void TakeName(sdbus::IConnection& bus, const std::string& name) {
  if (UniqueNameOf(bus, name) != bus.getUniqueName()) bus.requestName(name);
}

sdbus::Slot WatchOwner(sdbus::IConnection& bus, const std::string& name, std::function<void(bool hasOwner)> changed) {
  const std::string rule = std::string("type='signal',sender='") + kBus + "',member='NameOwnerChanged',arg0='" + name;
  return bus.addMatch(rule + "'", [changed = std::move(changed)](sdbus::Message& message) {
    std::string changedName;
    std::string oldOwner;
    std::string newOwner;
    message >> changedName >> oldOwner >> newOwner;
    changed(!newOwner.empty());
  });
}

}  // namespace tessaro::platform
