#include "Base/Ref.h"
#include "Base/TsLog.h"
#import "Migration/TsMigration.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#include "Utilities/TsJSON.h"

void hasPreviousVersion(const ScriptArguments& args) {
  const auto migration = Adopt([[TsMigration alloc] init]);
  args.GetReturnValue().Set([migration hasPreviousVersion] && [migration hasAccounts]);
}

void getMigrationInfo(const ScriptArguments& args) {
  const auto migration = Adopt([[TsMigration alloc] init]);
  NSString* json = TsConvertToJSONString([migration reportOf:convertToNSString(args[0])]);
  if (json == nil) TsLogWarning(@"Couldn't convert to JSON");
  ReturnStringOrNull(args, json);
}
