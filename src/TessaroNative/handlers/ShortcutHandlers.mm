#import "Shortcuts/TsGlobalShortcut.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"

void startMonitoringKeyboardShortcuts(const ScriptArguments& args) {
  [[TsGlobalShortcut sharedInstance] startMonitoringKeyboardEvents:convertToNSString(args[0])];
}

void stopMonitoringKeyboardShortcuts(const ScriptArguments&) {
  [[TsGlobalShortcut sharedInstance] stopMonitoringKeyboardEvents];
}

void bindGlobalShortcutWithDefaultsKey(const ScriptArguments& args) {
  [[TsGlobalShortcut sharedInstance] bindDefaultsKey:convertToNSString(args[0])];
}

void globalShortcutDescriptionForDefaultsKey(const ScriptArguments& args) {
  NSString* key = convertToNSString(args[0]);
  ReturnStringOrNull(args, [[TsGlobalShortcut sharedInstance] shortcutDescriptionForDefaultsKey:key]);
}
