#pragma once

#include <node.h>

void AttachValuesProbe(v8::Local<v8::Object> exports);
