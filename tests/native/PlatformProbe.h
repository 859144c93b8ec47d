#pragma once

#include <node.h>

void AttachPlatformProbe(v8::Local<v8::Object> exports);
void AttachBusProbe(v8::Local<v8::Object> exports);
void AttachReachabilityProbe(v8::Local<v8::Object> exports);
