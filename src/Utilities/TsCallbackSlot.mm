#include "Utilities/TsCallbackSlot.h"

#import <Foundation/Foundation.h>
#include <node.h>

#include <array>
#include <unordered_map>

#include "Base/Lifetime.h"
#include "Utilities/TsEngineEntry.h"
#include "Utilities/TsScriptValues.h"

struct TsCallbackSlot::Function {
  v8::Global<v8::Value> handle;
};

namespace {

constexpr std::size_t kMostArguments = 8;

class ToScript {
 public:
  explicit ToScript(v8::Isolate* isolate) : isolate_(isolate) {}

  v8::Local<v8::Value> operator()(NSString* text) const {
    v8::Local<v8::String> string;
    if (!ToScriptString(isolate_, text).ToLocal(&string)) return v8::Null(isolate_);
    return string;
  }
  v8::Local<v8::Value> operator()(bool value) const { return v8::Boolean::New(isolate_, value); }
  v8::Local<v8::Value> operator()(std::int32_t value) const { return v8::Integer::New(isolate_, value); }
  v8::Local<v8::Value> operator()(TsObjectHandle handle) const { return ToBuffer(isolate_, handle.object); }

 private:
  v8::Isolate* isolate_;
};

v8::MaybeLocal<v8::Value> CallInEngine(const TsEngineEntry& entry, const v8::Global<v8::Value>& function,
                                       std::initializer_list<TsScriptArgument> arguments) {
  std::array<v8::Local<v8::Value>, kMostArguments> values;
  int count = 0;
  for (const auto& argument : arguments) values[count++] = std::visit(ToScript(entry.isolate()), argument);
  return entry.Call(function.Get(entry.isolate()), count, values.data());
}

struct AllSlots {
  std::array<TsCallbackSlot, static_cast<std::size_t>(TsSlot::Count)> all;

  static constexpr EndStage kEnd = EndStage::Script;
  void Close() {
    for (TsCallbackSlot& slot : all) slot.Set({});
  }
};

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

TsCallbackSlot::TsCallbackSlot() = default;

TsCallbackSlot::~TsCallbackSlot() {
  // A handle must not be given back to an engine that has ended.
  if (GetApplicationIsolate() == nullptr) static_cast<void>(function_.release());
}

bool TsCallbackSlot::IsSet() const { return function_ != nullptr; }

void TsCallbackSlot::Set(v8::Local<v8::Value> function) {
  function_.reset();
  if (function.IsEmpty()) return;
  function_ = std::make_unique<Function>();
  function_->handle.Reset(GetApplicationIsolate(), function);
}

template <typename Result, typename Use>
Result TsCallbackSlot::ResultOf(std::initializer_list<TsScriptArgument> arguments, Result otherwise,
                                const Use& use) const {
  v8::Isolate* isolate = GetApplicationIsolate();
  if (!IsSet() || isolate == nullptr) return otherwise;
  const TsEngineEntry entry(isolate);
  v8::Local<v8::Value> result;
  return CallInEngine(entry, function_->handle, arguments).ToLocal(&result) ? use(result) : otherwise;
}

void TsCallbackSlot::Call(std::initializer_list<TsScriptArgument> arguments) const {
  ResultOf(arguments, false, [](v8::Local<v8::Value>) { return true; });
}

NSString* TsCallbackSlot::CallForString(std::initializer_list<TsScriptArgument> arguments) const {
  return ResultOf<NSString*>(arguments, nil, convertToNSString);
}

NSString* TsCallbackSlot::CallForText(std::initializer_list<TsScriptArgument> arguments) const {
  return ResultOf<NSString*>(
      arguments, nil, [](v8::Local<v8::Value> result) { return result->IsString() ? convertToNSString(result) : nil; });
}

std::variant<bool, std::int32_t> TsCallbackSlot::CallForBoolean(
    std::initializer_list<TsScriptArgument> arguments) const {
  using Answer = std::variant<bool, std::int32_t>;
  return ResultOf<Answer>(arguments, 0, [](v8::Local<v8::Value> result) -> Answer {
    if (result->IsBoolean()) return result->IsTrue();
    // Other values could run script of their own to become a number.
    return result->IsInt32() ? result.As<v8::Int32>()->Value() : 0;
  });
}

TsCallbackSlot& TsCallback(TsSlot slot) {
  static Forever<AllSlots> slots;
  return slots->all[static_cast<std::size_t>(slot)];
}

TsCompletion TsPendingCallback(v8::Local<v8::Value> function) {
  if (function.IsEmpty() || !function->IsFunction()) return [](NSString*) {};
  const std::uint64_t number = PendingCallbacks::Shared().Add(function);
  return [number](NSString* result) { PendingCallbacks::Shared().Call(number, result); };
}
