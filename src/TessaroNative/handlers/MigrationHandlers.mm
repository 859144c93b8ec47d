#include "Base/Ref.h"
#include "Base/TsLog.h"
#import "Migration/TsMigration.h"
#include "TessaroNative/handlers/Handlers.h"
#include "Utilities/TsScriptValues.h"

void hasPreviousVersion(const v8::FunctionCallbackInfo<v8::Value>& args) {
  const auto migration = Adopt([[TsMigration alloc] init]);
  args.GetReturnValue().Set([migration hasPreviousVersion] && [migration hasAccounts]);
}

void getMigrationInfo(const v8::FunctionCallbackInfo<v8::Value>& args) {
  const auto migration = Adopt([[TsMigration alloc] init]);
  const auto json = [migration reportOf:convertToNSString(args[0])];
  if (!json) TsLogWarning(@"Couldn't convert to JSON");
  args.GetReturnValue().SetNull();
  // The engine has no string of that length.
  if (!json || json->size() > v8::String::kMaxLength) return;
  v8::Local<v8::String> report;
  const auto made = v8::String::NewFromUtf8(args.GetIsolate(), json->data(), v8::NewStringType::kNormal,
                                            static_cast<int>(json->size()));
  if (made.ToLocal(&report)) args.GetReturnValue().Set(report);
}
