#include "Platform/HotKeys.h"

#include "Platform/Linux/Keyboard/KeyGrabs.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

struct HotKeyRegistration::Body : KeyGrabs::Listener {
  Body(const HotKey& key, std::function<void()> pressed) : Listener(key), pressed(std::move(pressed)) {}

  std::function<void()> pressed;
};

HotKeyStatus HotKeyStatusOf(const HotKey& key) noexcept { return KeyGrabs::Shared().Probe(key); }

HotKeyRegistration::HotKeyRegistration(const HotKey& key, std::function<void()> pressed)
    : body_(std::make_shared<Body>(key, std::move(pressed))) {
  body_->receive = [body = std::weak_ptr(body_)] {
    MainQueue::Shared().Post([body] {
      // The registration may have been destroyed since, or be destroyed by this call.
      if (const auto kept = body.lock()) kept->pressed();
    });
  };
  KeyGrabs::Shared().Add(*body_);
}

HotKeyRegistration::~HotKeyRegistration() { KeyGrabs::Shared().Remove(*body_); }

HotKeyStatus HotKeyRegistration::Status() const noexcept { return body_->status; }

}  // namespace tessaro::platform
