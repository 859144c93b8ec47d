#import <Foundation/Foundation.h>

#include "Base/TsLog.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/ReturnValues.h"
#include "Utilities/TsJSON.h"
#include "Workspace/TsWorkspace.h"

namespace {

// 0 for what is no number.
std::int32_t Integer(const v8::FunctionCallbackInfo<v8::Value>& args, int index) {
  return args[index]->Int32Value(args.GetIsolate()->GetCurrentContext()).FromMaybe(0);
}

void ReturnEntries(const v8::FunctionCallbackInfo<v8::Value>& args, NSArray* entries) {
  NSString* json = TsConvertToJSONString(entries);
  if (json == nil) TsLogWarning(@"Couldn't create json string");
  ReturnString(args, json);
}

// null and the log for nil.
void ReturnStringOrNull(const v8::FunctionCallbackInfo<v8::Value>& args, NSString* string, const char* name) {
  if (string != nil) return ReturnString(args, string);
  TsLogWarning(@"Couldn't get %s", name);
  args.GetReturnValue().SetNull();
}

}  // namespace

void applicationsForFileExtension(const v8::FunctionCallbackInfo<v8::Value>& args) {
  ReturnEntries(
      args, TsApplicationsForFileExtension(convertToNSString(args[0]), Integer(args, 1), convertToNSString(args[2])));
}

void applicationsForScheme(const v8::FunctionCallbackInfo<v8::Value>& args) {
  ReturnEntries(args,
                TsApplicationsForURLScheme(convertToNSString(args[0]), Integer(args, 1), convertToNSString(args[2])));
}

void bundleId(const v8::FunctionCallbackInfo<v8::Value>& args) {
  ReturnStringOrNull(args, [[NSBundle mainBundle] bundleIdentifier], "bundleId");
}

void applicationName(const v8::FunctionCallbackInfo<v8::Value>& args) {
  ReturnStringOrNull(args, TsApplicationNameForBundleId(convertToNSString(args[0])), "applicationName");
}

void isApplicationInstalled(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set(TsIsApplicationInstalled(convertToNSString(args[0])));
}

void defaultApplicationForScheme(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSString* scheme = convertToNSString(args[0]);
  TsLogInfo(@"defaultApplicationForScheme: %@", scheme);
  NSString* identifier = TsGetDefaultApplicationForURLScheme(scheme);
  TsLogInfo(@"defaultApplicationForScheme: %@ -> %@", scheme, identifier);
  ReturnString(args, identifier);
}

void setDefaultApplicationForScheme(const v8::FunctionCallbackInfo<v8::Value>& args) {
  const bool isSet = TsSetDefaultApplicationForURLScheme(convertToNSString(args[0]), convertToNSString(args[1]));
  args.GetReturnValue().Set(isSet ? 1 : 0);
}

void iconForFileExtension(const v8::FunctionCallbackInfo<v8::Value>& args) {
  ReturnString(args,
               TsGetIconForPathExtension(convertToNSString(args[0]), Integer(args, 1), convertToNSString(args[2])));
}

void iconForApplication(const v8::FunctionCallbackInfo<v8::Value>& args) {
  ReturnString(
      args, TsGetApplicationIconForBundleId(convertToNSString(args[0]), Integer(args, 1), convertToNSString(args[2])));
}

void openFile(const v8::FunctionCallbackInfo<v8::Value>& args) {
  const bool deactivate = args[2]->BooleanValue(args.GetIsolate());
  args.GetReturnValue().Set(TsOpenFile(convertToNSString(args[0]), convertToNSString(args[1]), deactivate) ? 1 : 0);
}

void openInfoForFile(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set(TsOpenInfoForFile(convertToNSString(args[0])));
}
