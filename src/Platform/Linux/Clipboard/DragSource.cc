#include "Platform/Linux/Clipboard/DragSource.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "Platform/Linux/Clipboard/SelectionServer.h"

namespace tessaro::platform {

namespace {

constexpr char kSelection[] = "XdndSelection";
constexpr std::uint32_t kVersion = 5;
constexpr std::size_t kTypesInMessage = 3;

// A target has this long to make up its mind.
constexpr auto kDeadline = std::chrono::seconds(5);

constexpr std::uint32_t kHasMoreTypes = 1;
constexpr std::uint32_t kAccepts = 1;

}  // namespace

// What the drag knows: of the main thread, of the selection server's, and of the one that watches the deadline.
struct DragSource::Body : std::enable_shared_from_this<DragSource::Body> {
  struct Point {
    int x = 0;
    int y = 0;
    bool operator==(const Point&) const = default;
  };

  struct Target {
    xcb_window_t window = XCB_NONE;    // the one under the mouse
    xcb_window_t receiver = XCB_NONE;  // that, or another that receives messages for it
    std::uint32_t version = 0;
  };

  enum class Phase { kMoving, kDropping, kEnded };

  [[nodiscard]] bool Start(Contents contents);
  void Move();
  void Drop();
  void Cancel();
  void HandleMessage(const xcb_client_message_event_t& message);

  // With the mutex held.
  void Enter(const Target& newTarget);
  void Leave();
  void SendPosition();
  void FinishDrop();
  void CallOff();
  void WatchDeadline();
  void Send(const char* name, std::array<std::uint32_t, 5> values);

  [[nodiscard]] std::optional<Point> Pointer();
  [[nodiscard]] Target TargetAt(Point point);
  [[nodiscard]] std::optional<std::uint32_t> WordOf(xcb_window_t window, const char* property);

  SelectionServer& server = SelectionServer::Shared();
  XConnection queries;  // the main thread's, whose replies must not bring the server's events along
  std::vector<std::string> types;

  mutable std::mutex mutex;
  std::condition_variable changed;
  Phase phase = Phase::kMoving;
  Target target;
  Point position;
  bool isAwaitingStatus = false;
  bool hasMoved = false;  // since the target was last told
  bool isWelcome = false;
};

// ---- Windows

std::optional<DragSource::Body::Point> DragSource::Body::Pointer() {
  const XcbOwner<xcb_query_pointer_reply_t> reply(
      xcb_query_pointer_reply(queries.get(), xcb_query_pointer(queries.get(), queries.root()), nullptr));
  if (!reply) return std::nullopt;
  return Point{reply->root_x, reply->root_y};
}

std::optional<std::uint32_t> DragSource::Body::WordOf(xcb_window_t window, const char* property) {
  const auto cookie =
      xcb_get_property(queries.get(), 0, window, queries.Atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 1);
  const XcbOwner<xcb_get_property_reply_t> reply(xcb_get_property_reply(queries.get(), cookie, nullptr));
  if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4) return std::nullopt;
  return *static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
}

DragSource::Body::Target DragSource::Body::TargetAt(Point point) {
  for (xcb_window_t window = queries.root(); window != XCB_NONE;) {
    const xcb_window_t proxy = WordOf(window, "XdndProxy").value_or(XCB_NONE);
    const xcb_window_t receiver = proxy != XCB_NONE ? proxy : window;
    if (const auto version = WordOf(receiver, "XdndAware")) return {window, receiver, std::min(*version, kVersion)};
    const auto cookie = xcb_translate_coordinates(
        queries.get(), queries.root(), window, static_cast<std::int16_t>(point.x), static_cast<std::int16_t>(point.y));
    const XcbOwner<xcb_translate_coordinates_reply_t> reply(
        xcb_translate_coordinates_reply(queries.get(), cookie, nullptr));
    window = reply ? reply->child : static_cast<xcb_window_t>(XCB_NONE);
  }
  return {};
}

// ---- The protocol

bool DragSource::Body::Start(Contents contents) {
  if (!server.IsAvailable() || !queries) return false;
  for (const auto& [type, bytes] : contents) types.push_back(type);
  std::vector<xcb_atom_t> atoms;
  for (const std::string& type : types) atoms.push_back(server.connection().Atom(type));
  xcb_change_property(server.connection().get(), XCB_PROP_MODE_REPLACE, server.connection().window(),
                      server.connection().Atom("XdndTypeList"), XCB_ATOM_ATOM, 32,
                      static_cast<std::uint32_t>(atoms.size()), atoms.data());
  server.ListenToMessages([weak = weak_from_this()](const xcb_client_message_event_t& message) {
    if (const auto body = weak.lock()) body->HandleMessage(message);
  });
  const auto provide = [data = std::make_shared<const Contents>(std::move(contents))](
                           const std::string& type, const SelectionServer::Answer& answer) {
    const auto found = data->find(type);
    if (found == data->end()) return answer(std::nullopt);
    answer(SelectionServer::Contents{type, std::shared_ptr<const std::string>(data, &found->second)});
  };
  return server.Take(kSelection, {types, provide, nullptr, nullptr});
}

void DragSource::Body::Send(const char* name, std::array<std::uint32_t, 5> values) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = target.window;
  event.type = server.connection().Atom(name);
  values[0] = server.connection().window();
  std::copy(values.begin(), values.end(), event.data.data32);
  xcb_send_event(server.connection().get(), 0, target.receiver, XCB_EVENT_MASK_NO_EVENT,
                 reinterpret_cast<const char*>(&event));
  xcb_flush(server.connection().get());
}

void DragSource::Body::Enter(const Target& newTarget) {
  target = newTarget;
  isAwaitingStatus = false;
  isWelcome = false;
  if (target.window == XCB_NONE) return;
  std::array<std::uint32_t, 5> values{};
  values[1] = target.version << 24 | (types.size() > kTypesInMessage ? kHasMoreTypes : 0);
  for (std::size_t i = 0; i < std::min(types.size(), kTypesInMessage); ++i) {
    values[2 + i] = server.connection().Atom(types[i]);
  }
  Send("XdndEnter", values);
}

void DragSource::Body::Leave() {
  if (target.window != XCB_NONE) Send("XdndLeave", {});
  target = {};
  isWelcome = false;
}

void DragSource::Body::SendPosition() {
  hasMoved = false;
  isAwaitingStatus = true;
  const auto point = static_cast<std::uint32_t>(position.x) << 16 | static_cast<std::uint32_t>(position.y & 0xffff);
  Send("XdndPosition", {0, 0, point, XCB_CURRENT_TIME, server.connection().Atom("XdndActionCopy")});
}

void DragSource::Body::Move() {
  const auto pointer = Pointer();
  if (!pointer) return;
  const Target found = TargetAt(*pointer);
  const std::lock_guard lock(mutex);
  if (phase != Phase::kMoving || (found.window == target.window && *pointer == position)) return;
  position = *pointer;
  if (found.window != target.window) {
    Leave();
    Enter(found);
  }
  if (target.window == XCB_NONE) return;
  // A target is told the next place only when it has answered to the last.
  hasMoved = true;
  if (!isAwaitingStatus) SendPosition();
}

void DragSource::Body::HandleMessage(const xcb_client_message_event_t& message) {
  const bool isStatus = message.type == server.connection().Atom("XdndStatus");
  const std::lock_guard lock(mutex);
  if (!isStatus || phase == Phase::kEnded || target.window == XCB_NONE) return;
  if (message.data.data32[0] != target.window) return;
  isAwaitingStatus = false;
  isWelcome = (message.data.data32[1] & kAccepts) != 0;
  if (hasMoved) return SendPosition();
  if (phase == Phase::kDropping) FinishDrop();
}

void DragSource::Body::Drop() {
  Move();
  const std::lock_guard lock(mutex);
  if (phase != Phase::kMoving) return;
  phase = Phase::kDropping;
  if (target.window == XCB_NONE || !isAwaitingStatus) return FinishDrop();
  WatchDeadline();
}

void DragSource::Body::FinishDrop() {
  if (!isWelcome) return CallOff();
  phase = Phase::kEnded;
  changed.notify_all();
  Send("XdndDrop", {0, 0, XCB_CURRENT_TIME, 0, 0});
}

void DragSource::Body::CallOff() {
  phase = Phase::kEnded;
  changed.notify_all();
  Leave();
}

void DragSource::Body::Cancel() {
  const std::lock_guard lock(mutex);
  if (phase == Phase::kMoving) CallOff();
}

void DragSource::Body::WatchDeadline() {
  std::thread([body = shared_from_this()] {
    std::unique_lock lock(body->mutex);
    const auto isOver = [&body] { return body->phase == Phase::kEnded; };
    if (!body->changed.wait_for(lock, kDeadline, isOver)) body->CallOff();
  }).detach();
}

// ---- Its owner

std::unique_ptr<DragSource> DragSource::Begin(Contents contents) {
  auto body = std::make_shared<Body>();
  if (!body->Start(std::move(contents))) return nullptr;
  return std::unique_ptr<DragSource>(new DragSource(std::move(body)));
}

DragSource::DragSource(std::shared_ptr<Body> body) : body_(std::move(body)) {}

DragSource::~DragSource() { body_->Cancel(); }

void DragSource::Move() { body_->Move(); }

bool DragSource::IsWelcome() const {
  const std::lock_guard lock(body_->mutex);
  return body_->isWelcome;
}

void DragSource::Drop() { body_->Drop(); }

}  // namespace tessaro::platform
