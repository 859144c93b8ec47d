#pragma once

#import <Foundation/Foundation.h>
#include <v8.h>

#include "Base/Ref.h"

// How values cross the script boundary. All of it runs on the main thread, inside a handle scope of the caller.

// nil for null and undefined. Every other value gives its string form, autoreleased; when the engine cannot convert
// it, the text "<string conversion failed>". Lone surrogates become U+FFFD, as they would on the way through UTF-8.
[[nodiscard]] NSString* convertToNSString(v8::Local<v8::Value> value);

// The same at +1, for callers that run without an autorelease pool.
[[nodiscard]] Ref<NSString> TsCopyString(v8::Isolate* isolate, v8::Local<v8::Value> value);

// The bytes of an engine UTF-8 value, or "<string conversion failed>" when there are none. Lives as long as `value`.
[[nodiscard]] const char* ToCString(const v8::String::Utf8Value& value);

// Empty only for nil, and for a text longer than the engine's strings can be.
[[nodiscard]] v8::MaybeLocal<v8::String> ToScriptString(v8::Isolate* isolate, NSString* string);

// The object whose reference a Buffer holds; nil when `value` is not a Buffer of at least 8 bytes. The object is not
// retained.
[[nodiscard]] id ToObjcObject(v8::Local<v8::Value> value);

// A Buffer of 8 bytes that holds the reference to `object`, which it does not retain: script must not use it after
// the object's end. null when the Buffer can't be made.
[[nodiscard]] v8::Local<v8::Value> ToBuffer(v8::Isolate* isolate, id object);

// A copy of a Buffer's bytes, owned by the caller. `value` must be a Buffer or a typed array.
[[nodiscard]] Ref<NSData> convertToNSData(v8::Local<v8::Value> value);
