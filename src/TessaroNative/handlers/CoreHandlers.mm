#import <Foundation/Foundation.h>

#include "Base/TsLog.h"
#include "Extensions/NSApplication+TsBundle.h"
#include "TessaroNative/StartUp.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsPageState.h"

namespace {

NSString* const kFScriptFramework = @"~/Library/Frameworks/FScript.framework";

}  // namespace

@interface NSObject (FScriptMenuItem)
+ (void)insertInMainMenu;
@end

void loadFScript(const ScriptArguments&) {
  NSString* path = [kFScriptFramework stringByExpandingTildeInPath];
  if (![[NSFileManager defaultManager] fileExistsAtPath:path]) {
    TsLogInfo(@"Couldn't find FScript at path %@", path);
    return;
  }
  if ([[NSBundle bundleWithPath:path] load]) [NSClassFromString(@"FScriptMenuItem") insertInMainMenu];
}

void setCurrentURL(const ScriptArguments& args) {
  v8::Isolate* isolate = args.GetIsolate();
  SetCurrentURL(TsCopyString(isolate, args[0]), TsCopyString(isolate, args[1]), TsCopyString(isolate, args[2]));
  args.GetReturnValue().SetNull();
}

void getBundlePath(const ScriptArguments& args) { ReturnString(args, [[NSBundle mainBundle] bundlePath]); }

void getPreferredLanguages(const ScriptArguments& args) {
  ReturnString(args, TsConvertToJSONString([NSLocale preferredLanguages]));
}

void isDarkMode(const ScriptArguments& args) { args.GetReturnValue().Set(TsIsDarkMode()); }

void macOSVersion(const ScriptArguments& args) { ReturnString(args, [NSApplication ts_osVersion]); }
