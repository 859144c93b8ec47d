#import <AppKit/NSApplication.h>

#include "Application/AtomApplication.h"
#include "TessaroNative/Handlers.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"

void modifierKeys(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().SetNull();
  NSDictionary* keys = TsModifierKeys();
  v8::Local<v8::String> result;
  if (keys == nil || !ToScriptString(args.GetIsolate(), TsConvertToJSONString(keys)).ToLocal(&result)) return;
  args.GetReturnValue().Set(result);
}

void TsIsAppHidden(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set(static_cast<bool>([NSApp isHidden]));
}
