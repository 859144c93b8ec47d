#include "Platform/TimeTracker.h"

#include <memory>
#include <utility>

#include "Base/Lifetime.h"
#include "Platform/Linux/Base/BusNames.h"
#include "Platform/Linux/Base/SessionBus.h"

namespace tessaro::platform {

namespace {

constexpr char kInterface[] = "org.tessaro.Timing";
constexpr char kPath[] = "/org/tessaro/Timing";

class TimeTrackerService {
 public:
  TimeTrackerService(std::string name, std::function<std::vector<std::string>()> answer)
      : name_(std::move(name)),
        answer_(std::move(answer)),
        subscription_(SessionBus::Shared().Listen({[this] { Appear(); }, [this] { object_.reset(); }})) {}

  [[nodiscard]] bool IsOffered() const { return object_ != nullptr; }

 private:
  void Appear() noexcept {
    auto& bus = *SessionBus::Shared().Connection();
    try {
      object_ = sdbus::createObject(bus, kPath);
      object_->registerMethod("List").onInterface(kInterface).implementedAs([this] { return answer_(); });
      object_->finishRegistration();
      TakeName(bus, name_);
    } catch (const sdbus::Error&) {
      object_.reset();
    }
  }

  std::string name_;
  std::function<std::vector<std::string>()> answer_;
  std::unique_ptr<sdbus::IObject> object_;
  SessionBus::Subscription subscription_;
};

// The service, while there is one.
struct ServedTimeTracker {
  static constexpr EndStage kEnd = EndStage::Services;
  void Close() { service.reset(); }

  std::unique_ptr<TimeTrackerService> service;
};

ServedTimeTracker& Served() {
  static Forever<ServedTimeTracker> served;
  return *served;
}

}  // namespace

bool ServeTimeTracker(const std::string& applicationIdentifier, std::function<std::vector<std::string>()> answer) {
  Served().service = std::make_unique<TimeTrackerService>(applicationIdentifier, std::move(answer));
  return Served().service->IsOffered();
}

}  // namespace tessaro::platform
