#import <Foundation/Foundation.h>

#include "Base/TsLog.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#include "WebView/TsWebContentsView.h"

namespace {

float Coordinate(NSDictionary* point, NSString* name) { return [As<NSNumber>([point objectForKey:name]) floatValue]; }

// Other objects would raise when they are used as paths.
bool AreTexts(NSArray* paths) {
  for (id path in paths) {
    if (As<NSString>(path) == nil) return false;
  }
  return true;
}

}  // namespace

void dropFiles(const ScriptArguments& args) {
  NSWindow* window = ToWindow(args[0]);
  if (window == nil) return TsLogError(@"Need a window to attach files.");
  args.GetReturnValue().Set(false);
  NSDictionary* point = FromJSON<NSDictionary>(args[1], @"point");
  NSArray* paths = point != nil ? FromJSON<NSArray>(args[2], @"paths parameter") : nil;
  if (paths == nil) return;
  if (!AreTexts(paths)) {
    return TsLogError(@"Couldn't parse paths parameter %@ because of a path that is no text",
                      convertToNSString(args[2]));
  }
  const NSPoint location = NSMakePoint(Coordinate(point, @"x"), Coordinate(point, @"y"));
  args.GetReturnValue().Set(DropFiles(window, location, paths));
}
