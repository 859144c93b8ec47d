#pragma once

#include "Probe.h"

void AttachDialogProbe(v8::Local<v8::Object> exports);
