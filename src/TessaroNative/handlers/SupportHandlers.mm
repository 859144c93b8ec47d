#import <AppKit/AppKit.h>

#import "Support/TsSupportWindow.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"

namespace {

NSArray* Paths(v8::Local<v8::Value> value) { return FromJSON<NSArray>(value, @"attachments"); }

}  // namespace

void openSupportAndFeedbackWindow(const ScriptArguments& args) {
  [[TsSupportWindow sharedInstance] openWith:{.name = convertToNSString(args[0]),
                                              .email = convertToNSString(args[1]),
                                              .subject = convertToNSString(args[2]),
                                              .message = convertToNSString(args[3]),
                                              .attachments = args[4]->IsNull() ? nil : Paths(args[4])}];
}

void attachFilesToSupportAndFeedbackWindow(const ScriptArguments& args) {
  NSArray* paths = Paths(args[0]);
  if (paths == nil) return;
  TsSupportWindow* window = [TsSupportWindow sharedInstance];
  if ([[window window] isVisible]) return [window attachFiles:paths];
  [window openWith:{.attachments = paths}];
}
