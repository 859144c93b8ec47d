#pragma once

#include <node.h>

// Stores of any service and any patience, and the one in memory.
void AttachKeychainProbe(v8::Local<v8::Object> exports);
