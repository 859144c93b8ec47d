#include "Base/TsLog.h"
#include "Pasteboard/TsPasteboard.h"
#include "Platform/Cocoa.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/ReturnValues.h"
#include "Utilities/TsJSON.h"

void saveGeneralPasteboard(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set(TsSavePasteboard([NSPasteboard generalPasteboard]));
}

void restoreGeneralPasteboard(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set(TsRestorePasteboard([NSPasteboard generalPasteboard]));
}

void writeFileContentsToGeneralPasteboard(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set(TsWriteFileContents([NSPasteboard generalPasteboard], convertToNSString(args[0])));
}

void getValueOfPasteboardType(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSString* json =
      TsConvertToJSONString(TsStringsOfPasteboardType([NSPasteboard generalPasteboard], convertToNSString(args[0])));
  if (json != nil) return ReturnString(args, json);
  TsLogWarning(@"getValueOfPasteboardType: Couldn't create JSON From pasteboard");
  args.GetReturnValue().SetNull();
}

void doesPasteboardContainImage(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set([NSImage canInitWithPasteboard:[NSPasteboard generalPasteboard]] ? 1 : 0);
}

void getFindTextFromPasteboard(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSString* string = TsGetFindStringFromPasteboard();
  if (string != nil) return ReturnString(args, string);
  args.GetReturnValue().SetNull();
}

// Bound to the script name "setFindStringToPasteboard".
void getFindStringFromPasteboard(const v8::FunctionCallbackInfo<v8::Value>& args) {
  TsSetFindStringToPasteboard(convertToNSString(args[0]));
}
