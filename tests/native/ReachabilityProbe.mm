#include <memory>
#include <optional>

#include "Base/Ref.h"
#include "Probe.h"
#include "Reachability/TsReachability.h"

namespace platform = tessaro::platform;

namespace {

// A target whose flags the test chooses: no Linux machine has connections that must be dialled.
class ChosenTarget final : public platform::NetworkReachability {
 public:
  explicit ChosenTarget(std::optional<platform::ReachabilityFlags> flags) : flags_(flags) {}

  [[nodiscard]] std::optional<platform::ReachabilityFlags> Flags() const noexcept override { return flags_; }
  [[nodiscard]] bool Watch(std::shared_ptr<platform::SerialQueue>, Changed) noexcept override { return false; }
  void Unwatch() noexcept override {}

 private:
  std::optional<platform::ReachabilityFlags> flags_;
};

// Makes a monitor for a target's name, or one with fixed flags; nil as the target stands for unreadable flags. Gives
// nil for a target that can't be monitored.
id monitor(id target) {
  if (NSString* name = As<NSString>(target)) {
    if ([name isEqual:@"internet"]) return [TsReachability reachabilityForInternetConnection];
    if ([name isEqual:@"local WiFi"]) return [TsReachability reachabilityForLocalWiFi];
    return [TsReachability reachabilityWithHostName:name];
  }
  std::optional<platform::ReachabilityFlags> flags;
  if (target != nil) flags = [target unsignedIntValue];
  return Adopt([[TsReachability alloc] initWithReachabilityRef:std::make_shared<ChosenTarget>(flags)]).Autoreleased();
}

PROBES("reachability", monitor);

}  // namespace
