#pragma once

#include <node.h>

// Windows, toolbars and drags, as they are behind the module's functions. Windows are named by their titles.
void AttachWindowProbe(v8::Local<v8::Object> exports);
