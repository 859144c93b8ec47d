#include "Base/Ref.h"
#include "Base/TsLog.h"
#import "Keychain/TsKeyChain.h"
#import "Migration/TsMigration.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#include "Utilities/TsJSON.h"

void getPasswordForAccount(const ScriptArguments& args) {
  NSDictionary* result = [[TsKeychain sharedInstance] passwordForAccount:convertToNSString(args[0])];
  ReturnString(args, TsConvertToJSONString(result));
}

void setPasswordForAccount(const ScriptArguments& args) {
  NSString* password = convertToNSString(args[0]);
  NSString* account = convertToNSString(args[1]);
  if (password == nil || account == nil) {
    TsLogError(@"Not setting password as either password or account parameters are nil");
    return;
  }
  NSDictionary* result = [[TsKeychain sharedInstance] setPassword:password forAccount:account];
  ReturnString(args, TsConvertToJSONString(result));
}

void removePasswordForAccount(const ScriptArguments& args) {
  NSString* account = convertToNSString(args[0]);
  [[TsKeychain sharedInstance] removePasswordForAccount:account];
  TsLogInfo(@"Removed keychain entry for account %@", account);
}

void removeAllPasswords(const ScriptArguments&) {
  [[TsKeychain sharedInstance] removeAllPasswords];
  TsLogInfo(@"Removed all keychain entries for app");
}

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
