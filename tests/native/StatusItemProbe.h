#pragma once

#include <node.h>

void AttachStatusItemProbe(v8::Local<v8::Object> exports);
