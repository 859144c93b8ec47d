#pragma once

#include "Probe.h"

void AttachCaptureProbe(v8::Local<v8::Object> exports);
