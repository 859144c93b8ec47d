#import "Shortcuts/TsGlobalShortcut.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/ReturnValues.h"
#include "Utilities/TsScriptValues.h"

void startMonitoringKeyboardShortcuts(const v8::FunctionCallbackInfo<v8::Value>& args) {
  [[TsGlobalShortcut sharedInstance] startMonitoringKeyboardEvents:convertToNSString(args[0])];
}

void stopMonitoringKeyboardShortcuts(const v8::FunctionCallbackInfo<v8::Value>&) {
  [[TsGlobalShortcut sharedInstance] stopMonitoringKeyboardEvents];
}

void bindGlobalShortcutWithDefaultsKey(const v8::FunctionCallbackInfo<v8::Value>& args) {
  [[TsGlobalShortcut sharedInstance] bindDefaultsKey:convertToNSString(args[0])];
}

void globalShortcutDescriptionForDefaultsKey(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSString* key = convertToNSString(args[0]);
  NSString* description = [[TsGlobalShortcut sharedInstance] shortcutDescriptionForDefaultsKey:key];
  if (description == nil) return args.GetReturnValue().SetNull();
  ReturnString(args, description);
}
