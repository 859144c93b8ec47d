#include "Utilities/TsPendingCallback.h"

#include <node.h>

#include <cstdint>
#include <unordered_map>

#include "Base/Lifetime.h"
#include "Utilities/TsCallbackSlot.h"

namespace {

// Completions may outlive the engine; the slots that they call must not.
class PendingCallbacks {
 public:
  static PendingCallbacks& Shared() {
    static Forever<PendingCallbacks> callbacks;
    return *callbacks;
  }

  [[nodiscard]] std::uint64_t Add(v8::Local<v8::Value> function) {
    slots_[++last_].Set(function);
    return last_;
  }

  void Call(std::uint64_t number, NSString* result) {
    // The function may ask for more work, or end the environment.
    if (const auto slot = slots_.extract(number)) slot.mapped().Call({result});
  }

  static constexpr EndStage kEnd = EndStage::Script;
  void Close() { slots_.clear(); }

 private:
  std::unordered_map<std::uint64_t, TsCallbackSlot> slots_;
  std::uint64_t last_ = 0;
};

}  // namespace

TsCompletion TsPendingCallback(v8::Local<v8::Value> function) {
  if (function.IsEmpty() || !function->IsFunction()) return [](NSString*) {};
  const std::uint64_t number = PendingCallbacks::Shared().Add(function);
  return [number](NSString* result) { PendingCallbacks::Shared().Call(number, result); };
}
