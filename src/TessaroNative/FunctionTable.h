#pragma once

#include <node.h>

#include <span>

#include "TessaroNative/ArgumentContract.h"

using ScriptHandler = void (*)(const v8::FunctionCallbackInfo<v8::Value>& args);

// What a function answers when it has nothing to give: the machine lacks what it needs, or the work failed.
enum class Nothing { Undefined, Null, False, Zero, EmptyText, EmptyArray };

// What a handler needs around it.
enum class Needs {
  Bridge,        // nothing: it only moves values and makes no autoreleased object
  Foundation,    // an autorelease pool
  WindowServer,  // that, and a running window server
};

// One row: everything there is to know about a script function but its work.
struct ScriptFunction {
  const char* name;
  ScriptHandler handler;    // nullptr while the capability behind the name is missing
  const char* handlerName;  // differs from `name` for some
  Nothing nothing;
  Needs needs;
  Contract contract;
  int line = __builtin_LINE();  // where the row stands
};

// The whole script surface, in registration order.
[[nodiscard]] std::span<const ScriptFunction> FunctionTable();

// Attaches every function of the table to `exports`.
void RegisterFunctions(v8::Local<v8::Object> exports);
