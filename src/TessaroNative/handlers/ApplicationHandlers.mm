#import <AppKit/NSApplication.h>

#include <memory>
#include <optional>
#include <string_view>

#include "Application/AtomApplication.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Files/TsFileDialog.h"
#include "Platform/Files.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsJSON.h"

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

}  // namespace

void modifierKeys(const ScriptArguments& args) {
  NSDictionary* keys = TsModifierKeys();
  ReturnStringOrNull(args, keys != nil ? TsConvertToJSONString(keys) : nil);
}

void TsIsAppHidden(const ScriptArguments& args) { args.GetReturnValue().Set(static_cast<bool>([NSApp isHidden])); }

void showFileDialog(const ScriptArguments& args) {
  auto callback = std::make_shared<TsCallbackSlot>();
  callback->Set(args[2]);
  TsShowFileDialog(ToWindow(args[0]), convertToNSString(args[1]),
                   [callback](NSArray* paths) { callback->Call({paths != nil ? TsConvertToJSONString(paths) : nil}); });
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
