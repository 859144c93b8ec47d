#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/UvHandle.h"
#include "Platform/HotKeys.h"
#include "Platform/Linux/Keyboard/ModifierMasks.h"

struct _XDisplay;
union _XEvent;

namespace tessaro::platform {

// Hot keys as passive grabs of the X server's root window, on a separate connection that the event loop watches. The
// first hot key opens the connection. Main thread only.
class KeyGrabs {
 public:
  struct Listener {
    explicit Listener(const HotKey& key) : key(key) {}

    const HotKey key;
    HotKeyStatus status = HotKeyStatus::Unsupported;
    std::function<void()> receive;
  };

  static KeyGrabs& Shared();

  [[nodiscard]] HotKeyStatus Probe(const HotKey& key) noexcept;

  void Add(Listener& listener) noexcept;
  void Remove(Listener& listener) noexcept;

  // Leaves the event loop for good; no press is reported afterwards.
  static constexpr EndStage kEnd = EndStage::Services;
  void Close() noexcept;

 private:
  using KeyCode = std::uint8_t;

  struct DisplayCloser {
    void operator()(_XDisplay* display) const;
  };

  [[nodiscard]] bool Open() noexcept;
  [[nodiscard]] const Listener* Holder(const HotKey& key) const;
  [[nodiscard]] HotKeyStatus Grab(const HotKey& key) noexcept;
  void Ungrab(const HotKey& key) noexcept;
  void RegrabAll() noexcept;

  void ReadEvents() noexcept;
  void Receive(_XEvent& event) noexcept;
  void Press(KeyCode code, unsigned state) noexcept;
  void WaitForRelease(KeyCode key) noexcept;
  void LookForRelease() noexcept;
  [[nodiscard]] bool IsDown(KeyCode key) const noexcept;

  bool isClosed_ = false;
  bool isKeyboardChanged_ = false;
  std::unique_ptr<_XDisplay, DisplayCloser> display_;
  int keyboardEvent_ = 0;
  UvHandle<uv_poll_t> poll_;
  ModifierMasks masks_;
  std::list<Listener*> listeners_;
  std::optional<KeyCode> held_;  // further presses of this key are repeats
  UvHandle<uv_timer_t> release_;
};

}  // namespace tessaro::platform
