#pragma once

#include <node.h>

// The test add-on: the module itself, and on `exports.probe` what tests need to reach behind its script surface.

using ProbeArguments = const v8::FunctionCallbackInfo<v8::Value>&;

// Adds an object named `name` to `parent`.
[[nodiscard]] v8::Local<v8::Object> AddProbeObject(v8::Local<v8::Object> parent, const char* name);

void AttachCoreProbe(v8::Local<v8::Object> exports);
void AttachMacBodiesProbe(v8::Local<v8::Object> exports);

#ifdef __OBJC__
#import <Foundation/Foundation.h>

[[nodiscard]] inline NSNumber* Truth(bool value) { return [NSNumber numberWithBool:value]; }

[[nodiscard]] inline id OrNull(id value) { return value != nil ? value : [NSNull null]; }

// Returns the JSON text of an array or dictionary to script; undefined for nil.
void ReturnJSON(ProbeArguments args, id value);

// The value of a JSON text that script has given; nil for none.
[[nodiscard]] id ParsedArgument(ProbeArguments args, int index);

// A probe that reads its arguments itself.
template <void (*probe)(ProbeArguments)>
void InPool(ProbeArguments args) {
  @autoreleasepool {
    probe(args);
  }
}

// A probe from one JSON value to another.
template <id (*probe)(id)>
void FromJSON(ProbeArguments args) {
  @autoreleasepool {
    ReturnJSON(args, probe(ParsedArgument(args, 0)));
  }
}

// Attach a probe under its own name.
#define PROBE(function) NODE_SET_METHOD(exports, #function, InPool<function>)
#define JSON_PROBE(function) NODE_SET_METHOD(exports, #function, FromJSON<function>)
#endif
