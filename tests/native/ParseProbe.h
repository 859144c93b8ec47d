#pragma once

#include <node.h>

// What reading a store can't take less than: parsing its file.
void AttachParseProbe(v8::Local<v8::Object> exports);
