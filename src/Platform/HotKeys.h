#pragma once

#include <cstdint>
#include <functional>
#include <memory>

// System-wide hot keys: they work whichever application is active. Main thread only.
namespace tessaro::platform {

// A key by its place, see KeyboardLayout.h, and the modifiers held with it; locks make no difference.
// Which keys are Command, Option and Control is up to the user where keyboards don't have them.
struct HotKey {
  std::uint16_t virtualKeyCode = 0;
  bool command = false;
  bool option = false;
  bool control = false;
  bool shift = false;

  friend bool operator==(const HotKey&, const HotKey&) = default;
};

enum class HotKeyStatus {
  Active,
  Taken,  // by another application, or by the system itself
  NotOnKeyboard,
  Unsupported,  // the session has no system-wide keys, or there is no window system
};

// The status that a registration would have. This process's own registrations don't count.
[[nodiscard]] HotKeyStatus HotKeyStatusOf(const HotKey& key) noexcept;

// Calls `pressed` for each press of the key, not for the repeats of one that is held, until it is destroyed; a key that
// is down already has to be released first. Every registration of the same key is called. A registration whose key is
// taken is tried again whenever the keyboard or its layout changes.
//
// `pressed` runs on a later turn of the main queue, see MainQueue.h, and must not throw C++ exceptions.
class HotKeyRegistration {
 public:
  HotKeyRegistration(const HotKey& key, std::function<void()> pressed);
  ~HotKeyRegistration();
  HotKeyRegistration(const HotKeyRegistration&) = delete;
  HotKeyRegistration& operator=(const HotKeyRegistration&) = delete;

  [[nodiscard]] HotKeyStatus Status() const noexcept;

 private:
  struct Body;
  std::shared_ptr<Body> body_;
};

}  // namespace tessaro::platform
