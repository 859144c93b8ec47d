#import <Foundation/Foundation.h>

#include "Base/TsLog.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#include "Utilities/TsJSON.h"
#include "Workspace/TsWorkspace.h"

namespace {

void ReturnEntries(const ScriptArguments& args, NSArray* entries) {
  NSString* json = TsConvertToJSONString(entries);
  if (json == nil) TsLogWarning(@"Couldn't create json string");
  ReturnString(args, json);
}

void ReturnNamed(const ScriptArguments& args, NSString* string, const char* name) {
  if (string == nil) TsLogWarning(@"Couldn't get %s", name);
  ReturnStringOrNull(args, string);
}

}  // namespace

void applicationsForFileExtension(const ScriptArguments& args) {
  ReturnEntries(
      args, TsApplicationsForFileExtension(convertToNSString(args[0]), ToInteger(args[1]), convertToNSString(args[2])));
}

void applicationsForScheme(const ScriptArguments& args) {
  ReturnEntries(args,
                TsApplicationsForURLScheme(convertToNSString(args[0]), ToInteger(args[1]), convertToNSString(args[2])));
}

void bundleId(const ScriptArguments& args) { ReturnNamed(args, [[NSBundle mainBundle] bundleIdentifier], "bundleId"); }

void applicationName(const ScriptArguments& args) {
  ReturnNamed(args, TsApplicationNameForBundleId(convertToNSString(args[0])), "applicationName");
}

void isApplicationInstalled(const ScriptArguments& args) {
  args.GetReturnValue().Set(TsIsApplicationInstalled(convertToNSString(args[0])));
}

void defaultApplicationForScheme(const ScriptArguments& args) {
  NSString* scheme = convertToNSString(args[0]);
  TsLogInfo(@"defaultApplicationForScheme: %@", scheme);
  NSString* identifier = TsGetDefaultApplicationForURLScheme(scheme);
  TsLogInfo(@"defaultApplicationForScheme: %@ -> %@", scheme, identifier);
  ReturnString(args, identifier);
}

void setDefaultApplicationForScheme(const ScriptArguments& args) {
  const bool isSet = TsSetDefaultApplicationForURLScheme(convertToNSString(args[0]), convertToNSString(args[1]));
  args.GetReturnValue().Set(isSet ? 1 : 0);
}

void iconForFileExtension(const ScriptArguments& args) {
  ReturnString(args,
               TsGetIconForPathExtension(convertToNSString(args[0]), ToInteger(args[1]), convertToNSString(args[2])));
}

void iconForApplication(const ScriptArguments& args) {
  ReturnString(args, TsGetApplicationIconForBundleId(convertToNSString(args[0]), ToInteger(args[1]),
                                                     convertToNSString(args[2])));
}

void openFile(const ScriptArguments& args) {
  const bool deactivate = args[2]->BooleanValue(args.GetIsolate());
  args.GetReturnValue().Set(TsOpenFile(convertToNSString(args[0]), convertToNSString(args[1]), deactivate) ? 1 : 0);
}

void openInfoForFile(const ScriptArguments& args) {
  args.GetReturnValue().Set(TsOpenInfoForFile(convertToNSString(args[0])));
}
