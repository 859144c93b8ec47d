#include "TessaroNative/FunctionTable.h"

#import <Foundation/Foundation.h>

#include <algorithm>
#include <string>

#include "Base/TsLog.h"
#include "Platform/WindowServer.h"
#include "Utilities/TsCallbackSlot.h"

namespace {

void Answer(const ScriptArguments& args, Nothing nothing) {
  v8::Isolate* isolate = args.GetIsolate();
  switch (nothing) {
    case Nothing::Undefined:
      return args.GetReturnValue().SetUndefined();
    case Nothing::Null:
      return args.GetReturnValue().SetNull();
    case Nothing::False:
      return args.GetReturnValue().Set(false);
    case Nothing::Zero:
      return args.GetReturnValue().Set(0);
    case Nothing::EmptyText:
      return args.GetReturnValue().SetEmptyString();
    case Nothing::EmptyArray:
      return args.GetReturnValue().Set(v8::Array::New(isolate));
  }
}

void FillSlots(const ScriptFunction& function, const ScriptArguments& args) {
  int index = 0;
  for (const TsSlot slot : function.slots) TsCallback(slot).Set(args[index++]);
  Answer(args, function.nothing);
}

void Perform(const ScriptFunction& function, const ScriptArguments& args) {
  if (function.needs == Needs::WindowServer && !tessaro::platform::IsWindowServerAvailable()) {
    TsLogWarning(@"%s needs a window server, and there is none", function.name);
    return Answer(args, function.nothing);
  }
  @try {
    function.handler(args);
  } @catch (NSException* exception) {
    TsLogError(@"%s failed with %@: %@", function.name, [exception name], [exception reason]);
    Answer(args, function.nothing);
  }
}

}  // namespace

const Condition* Violated(const Contract& contract, const ScriptArguments& args) {
  const Condition* found =
      std::find_if(contract.begin(), contract.end(), [&](const Condition& each) { return !each.holds(args); });
  return found != contract.end() ? found : nullptr;
}

void Dispatch(const char* tableFile, const ScriptFunction& function, const ScriptArguments& args) {
  if (const Condition* violated = Violated(function.contract, args)) {
    const std::string text = std::string("Assertion `") + violated->text + "' failed.";
    TsAbort(tableFile, function.line, function.handlerName, text.c_str());
  }
  if (function.handler == nullptr) return FillSlots(function, args);
  // An autorelease pool costs more than all the rest of a small call.
  if (function.needs == Needs::Bridge) return function.handler(args);
  @autoreleasepool {
    Perform(function, args);
  }
}
