#pragma once

#include <node.h>

// The test add-on: the module itself, and on `exports.probe` what tests need to reach behind its script surface.

using ProbeArguments = const v8::FunctionCallbackInfo<v8::Value>&;

// Adds an object named `name` to `parent`.
[[nodiscard]] v8::Local<v8::Object> AddProbeObject(v8::Local<v8::Object> parent, const char* name);

void AttachCoreProbe(v8::Local<v8::Object> exports);
