#pragma once

#import <Foundation/NSString.h>

#include <functional>

namespace v8 {
template <class T>
class Local;
class Value;
}  // namespace v8

// Called once at the end of asynchronous work, with a text or with nil.
using TsCompletion = std::function<void(NSString* result)>;

// A completion that calls `function` with its result, once: calls after the first are ignored, and so is everything
// after the end of the script environment. For a value that is no function it does nothing. It may be copied; main
// thread only.
[[nodiscard]] TsCompletion TsPendingCallback(v8::Local<v8::Value> function);
