#pragma once

#include "TessaroNative/FunctionTable.h"

// The way into every handler: tests the contract, provides what the handler needs, and lets no Objective-C exception
// out into the engine.
void Dispatch(const char* tableFile, const ScriptFunction& function, const ScriptArguments& args);
