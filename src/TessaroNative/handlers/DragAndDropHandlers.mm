#import <Foundation/Foundation.h>

#include "Base/TsLog.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/WindowArgument.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"
#include "WebView/TsWebContentsView.h"

namespace {

// A container of class `kind`, or nil with an error for the log.
template <typename Container>
Container* Parsed(Class kind, NSString* text, NSError** error) {
  id container = TsConvertFromJSONString(text, error);
  return [container isKindOfClass:kind] ? container : nil;
}

float Coordinate(NSDictionary* point, NSString* name) {
  id number = [point objectForKey:name];
  return [number isKindOfClass:[NSNumber class]] ? [number floatValue] : 0;
}

// Only texts can be paths, and only they are asked for what paths are.
bool AreTexts(NSArray* paths) {
  for (id path in paths) {
    if (![path isKindOfClass:[NSString class]]) return false;
  }
  return true;
}

}  // namespace

void dropFiles(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSWindow* window = ToWindow(args[0]);
  if (window == nil) {
    TsLogError(@"Need a window to attach files.");
    return;
  }
  NSError* error = nil;
  NSString* pointText = convertToNSString(args[1]);
  NSDictionary* point = Parsed<NSDictionary>([NSDictionary class], pointText, &error);
  if (point == nil) {
    TsLogError(@"Couldn't parse point %@ because of %@", pointText, error);
    return args.GetReturnValue().Set(false);
  }
  NSString* pathsText = convertToNSString(args[2]);
  NSArray* paths = Parsed<NSArray>([NSArray class], pathsText, &error);
  if (paths == nil || !AreTexts(paths)) {
    TsLogError(@"Couldn't parse paths parameter %@ because of %@", pathsText, error);
    return args.GetReturnValue().Set(false);
  }
  const NSPoint location = NSMakePoint(Coordinate(point, @"x"), Coordinate(point, @"y"));
  args.GetReturnValue().Set(DropFiles(window, location, paths));
}
