#pragma once

#include <node.h>

void AttachMenuProbe(v8::Local<v8::Object> exports);
