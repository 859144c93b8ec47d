#include "Platform/HotKeys.h"

#include <Carbon/Carbon.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "Platform/MainQueue.h"
#include "Platform/macOS/CFRef.h"
#include "Platform/macOS/CarbonModifiers.h"

// Carbon's hot keys; presses arrive in the application's event loop, and need no consent. `Taken` means a shortcut of
// the system that is switched on, or an exclusive registration: what another application has otherwise can't be seen,
// and both then hear the key. Main thread only.
namespace tessaro::platform {

namespace {

constexpr FourCharCode kSignature = 'TsHK';

bool Is(CFDictionaryRef symbolic, CFStringRef key, UInt32 value) {
  const auto number = static_cast<CFNumberRef>(CFDictionaryGetValue(symbolic, key));
  SInt32 found = 0;
  return number != nullptr && CFNumberGetValue(number, kCFNumberSInt32Type, &found) &&
         static_cast<UInt32>(found) == value;
}

bool IsOfSystem(const HotKey& key) {
  CFRef<CFArrayRef> all;
  if (CopySymbolicHotKeys(all.Receive()) != noErr) return false;
  for (CFIndex i = 0; i < CFArrayGetCount(all.get()); ++i) {
    const auto symbolic = static_cast<CFDictionaryRef>(CFArrayGetValueAtIndex(all.get(), i));
    const auto enabled = static_cast<CFBooleanRef>(CFDictionaryGetValue(symbolic, kHISymbolicHotKeyEnabled));
    if (enabled != nullptr && CFBooleanGetValue(enabled) && Is(symbolic, kHISymbolicHotKeyCode, key.virtualKeyCode) &&
        Is(symbolic, kHISymbolicHotKeyModifiers, CarbonModifiersOf(key)))
      return true;
  }
  return false;
}

// One registration with the system, whose presses have a number.
class SystemHotKey {
 public:
  SystemHotKey(const HotKey& key, UInt32 number) {
    const EventHotKeyID identifier = {kSignature, number};
    status_ = RegisterEventHotKey(key.virtualKeyCode, CarbonModifiersOf(key), identifier, GetEventDispatcherTarget(), 0,
                                  &reference_);
  }
  SystemHotKey(const SystemHotKey&) = delete;
  SystemHotKey& operator=(const SystemHotKey&) = delete;
  ~SystemHotKey() {
    if (reference_ != nullptr) UnregisterEventHotKey(reference_);
  }

  [[nodiscard]] bool IsRegistered() const { return status_ == noErr; }

 private:
  EventHotKeyRef reference_ = nullptr;
  OSStatus status_ = noErr;
};

}  // namespace

namespace {

using Pressed = std::function<void()>;
using Listener = std::weak_ptr<const Pressed>;

// The keys that this process has: the system refuses a second registration of the same one.
class Registry {
 public:
  static Registry& Shared() {
    [[clang::no_destroy]] static Registry registry;
    return registry;
  }

  [[nodiscard]] bool Has(const HotKey& key) const {
    return std::any_of(entries_.begin(), entries_.end(), [&key](const auto& each) { return each.second.key == key; });
  }

  [[nodiscard]] bool Add(const HotKey& key, Listener listener) {
    for (auto& [number, entry] : entries_) {
      if (entry.key != key) continue;
      entry.listeners.push_back(std::move(listener));
      return true;
    }
    auto system = std::make_unique<SystemHotKey>(key, ++last_);
    if (!system->IsRegistered()) return false;
    entries_.emplace(last_, Entry{key, std::move(system), {std::move(listener)}});
    return true;
  }

  void DropUnused() {
    std::erase_if(entries_, [](auto& each) {
      std::erase_if(each.second.listeners, [](const Listener& listener) { return listener.expired(); });
      return each.second.listeners.empty();
    });
  }

 private:
  struct Entry {
    HotKey key;
    std::unique_ptr<SystemHotKey> system;
    std::vector<Listener> listeners;
  };

  Registry() {
    const EventTypeSpec presses = {kEventClassKeyboard, kEventHotKeyPressed};
    InstallEventHandler(GetEventDispatcherTarget(), OnPress, 1, &presses, this, nullptr);
  }

  static OSStatus OnPress(EventHandlerCallRef, EventRef event, void* registry) {
    EventHotKeyID identifier{};
    const OSStatus status = GetEventParameter(event, kEventParamDirectObject, typeEventHotKeyID, nullptr,
                                              sizeof identifier, nullptr, &identifier);
    if (status != noErr || identifier.signature != kSignature) return eventNotHandledErr;
    static_cast<Registry*>(registry)->Press(identifier.id);
    return noErr;
  }

  void Press(UInt32 number) {
    const auto entry = entries_.find(number);
    if (entry == entries_.end()) return;
    for (const Listener& listener : entry->second.listeners) {
      MainQueue::Shared().Post([listener] {
        if (const auto pressed = listener.lock()) (*pressed)();
      });
    }
  }

  std::map<UInt32, Entry> entries_;
  UInt32 last_ = 0;
};

bool IsOnKeyboard(const HotKey& key) { return key.virtualKeyCode <= 0x7f; }

}  // namespace

HotKeyStatus HotKeyStatusOf(const HotKey& key) noexcept {
  if (!IsOnKeyboard(key)) return HotKeyStatus::NotOnKeyboard;
  if (IsOfSystem(key)) return HotKeyStatus::Taken;
  if (Registry::Shared().Has(key)) return HotKeyStatus::Active;
  return SystemHotKey(key, 0).IsRegistered() ? HotKeyStatus::Active : HotKeyStatus::Taken;
}

struct HotKeyRegistration::Body {
  std::shared_ptr<const Pressed> pressed;
  HotKeyStatus status = HotKeyStatus::Active;
};

HotKeyRegistration::HotKeyRegistration(const HotKey& key, std::function<void()> pressed)
    : body_(std::make_shared<Body>(Body{std::make_shared<const Pressed>(std::move(pressed)), HotKeyStatusOf(key)})) {
  if (body_->status != HotKeyStatus::Active || Registry::Shared().Add(key, body_->pressed)) return;
  body_->status = HotKeyStatus::Taken;
}

HotKeyRegistration::~HotKeyRegistration() {
  body_.reset();
  Registry::Shared().DropUnused();
}

HotKeyStatus HotKeyRegistration::Status() const noexcept { return body_->status; }

}  // namespace tessaro::platform
