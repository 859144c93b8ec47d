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

// A monitor with fixed flags; without them, of unreadable ones.
id monitor(NSNumber* word) {
  std::optional<platform::ReachabilityFlags> flags;
  if (word != nil) flags = [word unsignedIntValue];
  return Adopt([[TsReachability alloc] initWithReachabilityRef:std::make_shared<ChosenTarget>(flags)]).Autoreleased();
}

PROBES("reachability", monitor);

}  // namespace
