#include "Platform/HotKeys.h"

#include <X11/XKBlib.h>
#include <X11/Xlib-xcb.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/Owned.h"
#include "Base/UvHandle.h"
#include "Platform/KeyboardLayout.h"
#include "Platform/Linux/Base/XDisplay.h"
#include "Platform/Linux/Keyboard/ModifierKeys.h"
#include "Platform/MainQueue.h"

#undef Status  // Xlib defines it as int.

namespace tessaro::platform {

namespace {

constexpr KeyCode kFirstKey = 8;
constexpr unsigned kKeys = 256;
constexpr std::uint64_t kReleaseInterval = 20;  // ms

// Several key codes may have the same virtual key code.
std::vector<KeyCode> KeyCodesOf(std::uint16_t virtualKeyCode) {
  std::vector<KeyCode> codes;
  if (virtualKeyCode == kNoVirtualKey) return codes;
  for (unsigned code = kFirstKey; code < kKeys; ++code) {
    if (VirtualKeyCode(static_cast<std::uint16_t>(code)) == virtualKeyCode) codes.push_back(static_cast<KeyCode>(code));
  }
  return codes;
}

// Hot keys as passive grabs of the X server's root window, on a separate connection that the event loop watches. The
// first hot key opens the connection. Main thread only.
class KeyGrabs {
 public:
  struct Listener : std::enable_shared_from_this<Listener> {
    Listener(const HotKey& wanted, std::function<void()> handler) : key(wanted), pressed(std::move(handler)) {}

    void Receive() const {
      MainQueue::Shared().Post([listener = weak_from_this()] {
        // The registration may have been destroyed since, or be destroyed by this call.
        if (const auto kept = listener.lock()) kept->pressed();
      });
    }

    const HotKey key;
    const std::function<void()> pressed;
    HotKeyStatus status = HotKeyStatus::Unsupported;
  };

  static KeyGrabs& Shared() {
    static Forever<KeyGrabs> grabs;
    return *grabs;
  }

  [[nodiscard]] HotKeyStatus Probe(const HotKey& key) noexcept {
    if (Holder(key) != nullptr) return HotKeyStatus::Active;
    const HotKeyStatus status = Grab(key);
    if (status == HotKeyStatus::Active) Ungrab(key);
    return status;
  }

  void Add(Listener& listener) noexcept {
    listener.status = Holder(listener.key) != nullptr ? HotKeyStatus::Active : Grab(listener.key);
    listeners_.push_back(&listener);
  }

  void Remove(Listener& listener) noexcept {
    listeners_.remove(&listener);
    if (listener.status == HotKeyStatus::Active && Holder(listener.key) == nullptr) Ungrab(listener.key);
  }

  // Leaves the event loop for good; no press is reported afterwards.
  static constexpr EndStage kEnd = EndStage::Services;
  void Close() noexcept {
    isClosed_ = true;
    release_.reset();
    poll_.reset();
    display_.reset();
  }

 private:
  [[nodiscard]] bool Open() noexcept {
    if (display_) return true;
    // The X server of a Wayland session receives keys only while one of its own windows has the keyboard focus.
    if (isClosed_ || IsWaylandSession()) return false;
    display_.reset(XOpenDisplay(nullptr));
    if (!display_) return false;
    Display* display = display_.get();
    // With detectable auto-repeat a held key sends repeated presses and a single release.
    XkbSetDetectableAutoRepeat(display, True, nullptr);
    constexpr unsigned kKeyboardChanges = XkbNewKeyboardNotifyMask | XkbMapNotifyMask;
    XkbQueryExtension(display, nullptr, &keyboardEvent_, nullptr, nullptr, nullptr);
    XkbSelectEvents(display, XkbUseCoreKbd, kKeyboardChanges, kKeyboardChanges);
    masks_ = ModifierMasks(display);
    poll_ = MakeUvHandle<uv_poll_t>(this, uv_poll_init, ConnectionNumber(display));
    if (!poll_) {
      display_.reset();
      return false;
    }
    uv_poll_start(poll_.get(), UV_READABLE,
                  [](uv_poll_t* handle, int, int) { OwnerOf<KeyGrabs>(handle).ReadEvents(); });
    return true;
  }

  [[nodiscard]] const Listener* Holder(const HotKey& key) const {
    const auto found = std::find_if(listeners_.begin(), listeners_.end(), [&key](const Listener* each) {
      return each->key == key && each->status == HotKeyStatus::Active;
    });
    return found == listeners_.end() ? nullptr : *found;
  }

  [[nodiscard]] HotKeyStatus Grab(const HotKey& key) noexcept {
    if (!Open()) return HotKeyStatus::Unsupported;
    const std::vector<KeyCode> codes = KeyCodesOf(key.virtualKeyCode);
    const std::optional<unsigned> mask = masks_.Of(key);
    if (codes.empty() || !mask) return HotKeyStatus::NotOnKeyboard;

    // Checked requests return their errors; Xlib would pass them to the process-wide error handler.
    xcb_connection_t* connection = XGetXCBConnection(display_.get());
    const auto root = static_cast<xcb_window_t>(DefaultRootWindow(display_.get()));
    std::vector<xcb_void_cookie_t> requests;
    for (const KeyCode code : codes) {
      for (const unsigned locks : masks_.Locks()) {
        requests.push_back(xcb_grab_key_checked(connection, 1, root, static_cast<std::uint16_t>(*mask | locks), code,
                                                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
      }
    }
    bool isRefused = false;
    for (const xcb_void_cookie_t request : requests) {
      const Owned<xcb_generic_error_t, std::free> error(xcb_request_check(connection, request));
      if (error) isRefused = true;
    }
    // Waiting for the replies may have queued events that the event loop would not notice.
    MainQueue::Shared().Post([this] { ReadEvents(); });
    if (isRefused) {
      Ungrab(key);
      return HotKeyStatus::Taken;
    }
    for (const KeyCode code : codes) {
      if (IsDown(code)) WaitForRelease(code);
    }
    return HotKeyStatus::Active;
  }

  void Ungrab(const HotKey& key) noexcept {
    const std::optional<unsigned> mask = masks_.Of(key);
    if (!display_ || !mask) return;
    xcb_connection_t* connection = XGetXCBConnection(display_.get());
    const auto root = static_cast<xcb_window_t>(DefaultRootWindow(display_.get()));
    for (const KeyCode code : KeyCodesOf(key.virtualKeyCode)) {
      for (const unsigned locks : masks_.Locks()) {
        xcb_ungrab_key(connection, code, root, static_cast<std::uint16_t>(*mask | locks));
      }
    }
    xcb_flush(connection);
  }

  // The new keyboard may have other modifier bits and key codes.
  void RegrabAll() noexcept {
    isKeyboardChanged_ = false;
    Display* display = display_.get();
    XUngrabKey(display, AnyKey, AnyModifier, DefaultRootWindow(display));
    masks_ = ModifierMasks(display);
    for (Listener* listener : listeners_) listener->status = HotKeyStatus::Unsupported;
    for (Listener* listener : listeners_) {
      listener->status = Holder(listener->key) != nullptr ? HotKeyStatus::Active : Grab(listener->key);
    }
  }

  void ReadEvents() noexcept {
    while (display_ && XPending(display_.get()) > 0) {
      XEvent event;
      XNextEvent(display_.get(), &event);
      Receive(event);
    }
    if (display_ && isKeyboardChanged_) RegrabAll();
  }

  void Receive(XEvent& event) noexcept {
    if (event.type == KeyPress) return Press(static_cast<KeyCode>(event.xkey.keycode), event.xkey.state);
    if (event.type == KeyRelease) {
      if (held_ == event.xkey.keycode) held_.reset();
    } else if (event.type == MappingNotify) {
      XRefreshKeyboardMapping(&event.xmapping);
      isKeyboardChanged_ = true;
    } else if (event.type == keyboardEvent_) {
      auto& change = reinterpret_cast<XkbEvent&>(event);
      if (change.any.xkb_type == XkbMapNotify) XkbRefreshKeyboardMapping(&change.map);
      isKeyboardChanged_ = true;
    }
  }

  void Press(KeyCode code, unsigned state) noexcept {
    if (held_ == code) return;
    WaitForRelease(code);
    const std::uint16_t virtualKeyCode = VirtualKeyCode(code);
    const unsigned held = masks_.Held(state);
    for (const Listener* listener : listeners_) {
      if (listener->key.virtualKeyCode == virtualKeyCode && masks_.Of(listener->key) == held) listener->Receive();
    }
  }

  // We may never get this key's release (released before the grab took effect, or another client grabbed the keyboard),
  // so poll the key state.
  void WaitForRelease(KeyCode key) noexcept {
    held_ = key;
    if (!release_) release_ = MakeUvHandle<uv_timer_t>(this, uv_timer_init);
    uv_timer_start(
        release_.get(), [](uv_timer_t* timer) { OwnerOf<KeyGrabs>(timer).LookForRelease(); }, kReleaseInterval,
        kReleaseInterval);
  }

  void LookForRelease() noexcept {
    const bool isReleased = held_ && !IsDown(*held_);
    // Repeats of the key may still be queued.
    ReadEvents();
    if (isReleased) held_.reset();
    if (!held_ && release_) uv_timer_stop(release_.get());
  }

  [[nodiscard]] bool IsDown(KeyCode key) const noexcept {
    std::array<char, kKeys / 8> keys{};
    XQueryKeymap(display_.get(), keys.data());
    return (static_cast<unsigned char>(keys[key / 8]) >> (key % 8) & 1) != 0;
  }

  bool isClosed_ = false;
  bool isKeyboardChanged_ = false;
  Owned<Display, XCloseDisplay> display_;
  int keyboardEvent_ = 0;
  UvHandle<uv_poll_t> poll_;
  ModifierMasks masks_;
  std::list<Listener*> listeners_;
  std::optional<KeyCode> held_;  // further presses of this key are repeats
  UvHandle<uv_timer_t> release_;
};

}  // namespace

struct HotKeyRegistration::Body : KeyGrabs::Listener {
  using Listener::Listener;
};

HotKeyStatus HotKeyStatusOf(const HotKey& key) noexcept { return KeyGrabs::Shared().Probe(key); }

HotKeyRegistration::HotKeyRegistration(const HotKey& key, std::function<void()> pressed)
    : body_(std::make_shared<Body>(key, std::move(pressed))) {
  KeyGrabs::Shared().Add(*body_);
}

HotKeyRegistration::~HotKeyRegistration() { KeyGrabs::Shared().Remove(*body_); }

HotKeyStatus HotKeyRegistration::Status() const noexcept { return body_->status; }

}  // namespace tessaro::platform
