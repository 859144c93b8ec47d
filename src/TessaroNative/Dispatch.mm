#include "TessaroNative/Dispatch.h"

#import <Foundation/Foundation.h>

#include "Base/TsLog.h"
#include "Platform/WindowServer.h"

namespace {

using Arguments = v8::FunctionCallbackInfo<v8::Value>;

void Answer(const Arguments& args, Nothing nothing) {
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

void Perform(const ScriptFunction& function, const Arguments& args) {
  if (function.needs == Needs::WindowServer && !tessaro::platform::IsWindowServerAvailable()) {
    TsLogWarning(@"%s needs a window server, and there is none", function.name);
    return Answer(args, function.nothing);
  }
  if (function.handler == nullptr) {
    TsLogWarning(@"%s is not available yet", function.name);
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

void Dispatch(const char* tableFile, const ScriptFunction& function, const Arguments& args) {
  if (const Condition* violated = function.contract.Violated(args)) {
    AbortOnViolation(tableFile, function.line, function.handlerName, *violated);
  }
  // An autorelease pool costs more than all the rest of a small call.
  if (function.needs == Needs::Bridge && function.handler != nullptr) return function.handler(args);
  @autoreleasepool {
    Perform(function, args);
  }
}
