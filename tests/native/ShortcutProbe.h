#pragma once

#include <node.h>

// Shortcuts as values: their archives, names, and which of them may be recorded. All in JSON.
void AttachShortcutProbe(v8::Local<v8::Object> exports);
