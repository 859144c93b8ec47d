#import <AppKit/NSApplication.h>

#include "Application/AtomApplication.h"
#include "TessaroNative/Handlers.h"
#include "TessaroNative/ReturnValues.h"
#include "Utilities/TsJSON.h"

void modifierKeys(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSDictionary* keys = TsModifierKeys();
  if (keys == nil) return args.GetReturnValue().SetNull();
  ReturnString(args, TsConvertToJSONString(keys));
}

void TsIsAppHidden(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set(static_cast<bool>([NSApp isHidden]));
}
