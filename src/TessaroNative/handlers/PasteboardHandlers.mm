#include "Base/TsLog.h"
#include "Pasteboard/TsPasteboard.h"
#include "Platform/Cocoa.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#include "Utilities/TsJSON.h"

void saveGeneralPasteboard(const ScriptArguments& args) {
  args.GetReturnValue().Set(TsSavePasteboard([NSPasteboard generalPasteboard]));
}

void restoreGeneralPasteboard(const ScriptArguments& args) {
  args.GetReturnValue().Set(TsRestorePasteboard([NSPasteboard generalPasteboard]));
}

void writeFileContentsToGeneralPasteboard(const ScriptArguments& args) {
  args.GetReturnValue().Set(TsWriteFileContents([NSPasteboard generalPasteboard], convertToNSString(args[0])));
}

void getValueOfPasteboardType(const ScriptArguments& args) {
  NSString* json =
      TsConvertToJSONString(TsStringsOfPasteboardType([NSPasteboard generalPasteboard], convertToNSString(args[0])));
  if (json == nil) TsLogWarning(@"getValueOfPasteboardType: Couldn't create JSON From pasteboard");
  ReturnStringOrNull(args, json);
}

void doesPasteboardContainImage(const ScriptArguments& args) {
  args.GetReturnValue().Set([NSImage canInitWithPasteboard:[NSPasteboard generalPasteboard]] ? 1 : 0);
}

void getFindTextFromPasteboard(const ScriptArguments& args) {
  ReturnStringOrNull(args, TsGetFindStringFromPasteboard());
}

// Bound to the script name "setFindStringToPasteboard".
void getFindStringFromPasteboard(const ScriptArguments& args) {
  TsSetFindStringToPasteboard(convertToNSString(args[0]));
}
