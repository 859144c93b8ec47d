#import <Foundation/Foundation.h>

#include "Base/TsLog.h"
#include "Sharing/TsSharing.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/WindowArgument.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"

namespace {

// A container of class `kind`; nil, with an error in the log, for other text.
id Parsed(Class kind, NSString* text) {
  NSError* error = nil;
  id container = TsConvertFromJSONString(text, &error);
  if ([container isKindOfClass:kind]) return container;
  TsLogError(@"Couldn't parse %@ because of %@", text, error);
  return nil;
}

}  // namespace

void shareFiles(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSWindow* window = ToWindow(args[0]);
  if (window == nil) return TsLogError(@"Need a window to share files from");
  NSArray* paths = Parsed([NSArray class], convertToNSString(args[1]));
  NSDictionary* place = Parsed([NSDictionary class], convertToNSString(args[2]));
  if (paths == nil || place == nil) return;
  TsShareFiles(window, paths, place);
}
