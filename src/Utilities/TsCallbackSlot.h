#pragma once

#import <Foundation/NSString.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <variant>

#include "Utilities/TsSlot.h"

namespace v8 {
template <class T>
class Local;
class Value;
}  // namespace v8

// A native object that script receives as an opaque handle (a Buffer of 8 bytes).
struct TsObjectHandle {
  id object = nil;
};

// An argument of a script function. A nil string arrives as null.
using TsScriptArgument = std::variant<NSString*, bool, std::int32_t, TsObjectHandle>;

// Holds one script function for native events to call. Empty at first; never cleared from script, only replaced.
//
// Main thread only. Calling an empty slot does nothing; callers with costly arguments ask IsSet() first. An exception
// of the function reaches the script that is running or, for a call from the event loop, the process's handling of
// uncaught exceptions. Promise reactions and next-tick callbacks of a function called from the event loop have run when
// the call returns.
class TsCallbackSlot {
 public:
  TsCallbackSlot();
  ~TsCallbackSlot();
  TsCallbackSlot(const TsCallbackSlot&) = delete;
  TsCallbackSlot& operator=(const TsCallbackSlot&) = delete;

  [[nodiscard]] bool IsSet() const;

  // Keeps any value: one that is not a function fails inside the engine when the slot is called.
  // An empty handle empties the slot.
  void Set(v8::Local<v8::Value> function);

  void Call(std::initializer_list<TsScriptArgument> arguments) const;

  // The function's result as convertToNSString() gives it; nil also when the slot is empty or the function threw.
  [[nodiscard]] NSString* CallForString(std::initializer_list<TsScriptArgument> arguments) const;

  // The function's result where it is a string; nil also when the slot is empty or the function threw.
  [[nodiscard]] NSString* CallForText(std::initializer_list<TsScriptArgument> arguments) const;

  // The function's result where it is a boolean. Otherwise its integer form, 0 where it has none, where the slot is
  // empty, and where the function threw.
  [[nodiscard]] std::variant<bool, std::int32_t> CallForBoolean(
      std::initializer_list<TsScriptArgument> arguments) const;

 private:
  // Passes the function's result to `use`; gives `otherwise` when the slot is empty or the function threw.
  template <typename Result, typename Use>
  Result ResultOf(std::initializer_list<TsScriptArgument> arguments, Result otherwise, const Use& use) const;

  struct Function;
  std::unique_ptr<Function> function_;
};

// The slot of that name. All are emptied when the script environment ends.
[[nodiscard]] TsCallbackSlot& TsCallback(TsSlot slot);

// Called once at the end of asynchronous work, with a text or with nil.
using TsCompletion = std::function<void(NSString* result)>;

// A completion that calls `function` with its result, once: calls after the first are ignored, and so is everything
// after the end of the script environment. For a value that is no function it does nothing. It may be copied; main
// thread only.
[[nodiscard]] TsCompletion TsPendingCallback(v8::Local<v8::Value> function);
