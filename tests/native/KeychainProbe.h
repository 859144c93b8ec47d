#pragma once

#include <node.h>

// Keychains of any service with any deadlines, and the transient one.
void AttachKeychainProbe(v8::Local<v8::Object> exports);
