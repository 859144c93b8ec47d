#import "Migration/TsMigration.h"
#include "TessaroNative/Handlers.h"
#include "TessaroNative/ReturnValues.h"
#include "Utilities/Ref.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsLog.h"

void hasPreviousVersion(const v8::FunctionCallbackInfo<v8::Value>& args) {
  const auto migration = Adopt([[TsMigration alloc] init]);
  args.GetReturnValue().Set([migration hasPreviousVersion] && [migration hasAccounts]);
}

void getMigrationInfo(const v8::FunctionCallbackInfo<v8::Value>& args) {
  const auto migration = Adopt([[TsMigration alloc] init]);
  NSString* json = TsConvertToJSONString([migration reportOf:convertToNSString(args[0])]);
  if (json != nil) return ReturnString(args, json);
  TsLogWarning(@"Couldn't convert to JSON");
  args.GetReturnValue().SetNull();
}
