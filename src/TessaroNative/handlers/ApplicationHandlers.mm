#import <AppKit/NSApplication.h>
#import <Foundation/Foundation.h>

#include <optional>
#include <string_view>

#include "Application/AtomApplication.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Extensions/NSApplication+TsBundle.h"
#include "Files/TsFileDialog.h"
#include "Platform/Files.h"
#include "TessaroNative/StartUp.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsPageState.h"

namespace platform = tessaro::platform;

namespace {

// The bytes of a Buffer, another view of memory, or a piece of memory itself; they live as long as it does.
std::optional<std::string_view> BytesOf(v8::Local<v8::Value> value) {
  if (value->IsArrayBufferView()) {
    const auto view = value.As<v8::ArrayBufferView>();
    return std::string_view(static_cast<const char*>(view->Buffer()->Data()) + view->ByteOffset(), view->ByteLength());
  }
  if (!value->IsArrayBuffer()) return std::nullopt;
  const auto memory = value.As<v8::ArrayBuffer>();
  return std::string_view(static_cast<const char*>(memory->Data()), memory->ByteLength());
}

NSString* const kFScriptFramework = @"~/Library/Frameworks/FScript.framework";

}  // namespace

void modifierKeys(const ScriptArguments& args) {
  NSDictionary* keys = TsModifierKeys();
  ReturnStringOrNull(args, keys != nil ? TsConvertToJSONString(keys) : nil);
}

void TsIsAppHidden(const ScriptArguments& args) { args.GetReturnValue().Set(static_cast<bool>([NSApp isHidden])); }

void showFileDialog(const ScriptArguments& args) {
  TsShowFileDialog(ToWindow(args[0]), convertToNSString(args[1]),
                   [completion = TsPendingCallback(args[2])](NSArray* paths) {
                     completion(paths != nil ? TsConvertToJSONString(paths) : nil);
                   });
}

void TsWriteFile(const ScriptArguments& args) {
  const auto bytes = BytesOf(args[1]);
  if (!bytes) return ReturnString(args, @"Only a Buffer, another typed array or an ArrayBuffer can be written");
  const auto write = args[2]->IsTrue() ? platform::AppendToFile : platform::ReplaceFile;
  const std::string path = TsStdString(convertToNSString(args[0]));
  const auto written = write(path, *bytes, platform::NewFile::AsUsual);
  if (written) return;
  NSString* failure = TsNSString(path + ": " + written.error().message);
  TsLogError(@"Couldn't write %@", failure);
  ReturnString(args, failure);
}

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
