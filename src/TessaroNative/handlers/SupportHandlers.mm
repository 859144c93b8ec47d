#import <AppKit/AppKit.h>

#include "Base/TsLog.h"
#import "Support/TsSupportWindow.h"
#include "TessaroNative/handlers/Handlers.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"

namespace {

// nil, with an error in the log, for what is no array.
NSArray* Paths(NSString* text) {
  NSError* error = nil;
  id paths = TsConvertFromJSONString(text, &error);
  if ([paths isKindOfClass:[NSArray class]]) return paths;
  TsLogError(@"Couldn't parse attachments %@ because of %@", text, error);
  return nil;
}

}  // namespace

void openSupportAndFeedbackWindow(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSString* attachments = convertToNSString(args[4]);
  [[TsSupportWindow sharedInstance] openWith:{.name = convertToNSString(args[0]),
                                              .email = convertToNSString(args[1]),
                                              .subject = convertToNSString(args[2]),
                                              .message = convertToNSString(args[3]),
                                              .attachments = attachments != nil ? Paths(attachments) : nil}];
}

void attachFilesToSupportAndFeedbackWindow(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSArray* paths = Paths(convertToNSString(args[0]));
  if (paths == nil) return;
  TsSupportWindow* window = [TsSupportWindow sharedInstance];
  if ([[window window] isVisible]) return [window attachFiles:paths];
  [window openWith:{.attachments = paths}];
}
