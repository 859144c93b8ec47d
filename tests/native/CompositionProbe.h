#pragma once

#include <node.h>

void AttachCompositionProbe(v8::Local<v8::Object> exports);
void AttachContactsProbe(v8::Local<v8::Object> exports);
