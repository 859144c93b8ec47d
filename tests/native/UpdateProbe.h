#pragma once

#include <node.h>

void AttachUpdateProbe(v8::Local<v8::Object> exports);
