#include "Platform/Timing.h"

#include <memory>
#include <utility>

#include "Base/Lifetime.h"
#include "Platform/Linux/Base/SessionBus.h"

namespace tessaro::platform {

namespace {

constexpr char kInterface[] = "org.tessaro.Timing";
constexpr char kPath[] = "/org/tessaro/Timing";

// A scripting request over the session bus: method List of kInterface at kPath, under the name that is the
// application's identifier.
class TimingService final : private BusService {
 public:
  TimingService(std::string name, TimingAnswer answer) : name_(std::move(name)), answer_(std::move(answer)) {
    JoinBus();
  }

  static constexpr EndStage kEnd = EndStage::Services;
  void Close() { LeaveBus(); }

  [[nodiscard]] bool IsOffered() const { return object_ != nullptr; }

 private:
  void Appear(sdbus::IConnection& bus) override {
    object_ = sdbus::createObject(bus, kPath);
    object_->registerMethod("List").onInterface(kInterface).implementedAs([this] { return answer_(); });
    object_->finishRegistration();
    TakeName(bus, name_);
  }

  void Disappear() noexcept override { object_.reset(); }

  std::string name_;
  TimingAnswer answer_;
  std::unique_ptr<sdbus::IObject> object_;
};

}  // namespace

Result<void> ServeTiming(const std::string& applicationIdentifier, TimingAnswer answer) {
  static Forever<TimingService> service(applicationIdentifier, std::move(answer));
  if (service->IsOffered()) return {};
  return Fail("no session bus, or the name " + applicationIdentifier + " is taken");
}

}  // namespace tessaro::platform
