#pragma once

#include <node.h>

// Sends messages to the stores and their objects: send(target, selector, ...arguments). A target is the name of a
// class, or what another message gave.
void AttachMigrationProbe(v8::Local<v8::Object> exports);
