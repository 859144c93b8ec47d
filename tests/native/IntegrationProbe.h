#pragma once

#include <node.h>

void AttachIntegrationProbe(v8::Local<v8::Object> exports);
