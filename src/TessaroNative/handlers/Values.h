#pragma once

#import <Foundation/Foundation.h>

#include "TessaroNative/handlers/Handlers.h"
#include "Utilities/TsScriptValues.h"

@class NSWindow;

// The handlers' conversions beyond those of the script bridge.

// Makes `string` the function's result; nil leaves it undefined.
void ReturnString(const ScriptArguments& args, NSString* string);
void ReturnStringOrNull(const ScriptArguments& args, NSString* string);

// 0 unless the value is a number.
[[nodiscard]] std::int32_t ToInteger(v8::Local<v8::Value> value);

// The window that a handle from script means; nil for other values, and once the window is gone.
[[nodiscard]] NSWindow* ToWindow(v8::Local<v8::Value> value);

// The object of class `type` that the value's JSON text describes. nil for all else, and an error in the log: "Couldn't
// parse <name> …", or the caller's words for unreadable text and for JSON of another type.
[[nodiscard]] id TsParsedArgument(v8::Local<v8::Value> value, Class type, NSString* name);
[[nodiscard]] id TsParsedArgument(v8::Local<v8::Value> value, Class type, NSString* unreadable, NSString* unsuitable);

// FromJSON<NSArray>(args[1], @"paths")
template <typename Container, typename... Words>
[[nodiscard]] Container* FromJSON(v8::Local<v8::Value> value, Words... words) {
  return TsParsedArgument(value, [Container class], words...);
}
