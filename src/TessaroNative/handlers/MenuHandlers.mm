#include "Menu/TsMainMenu.h"
#import "StatusItem/TsStatusItemController.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"

namespace {

NSDictionary* ToAttributeMap(v8::Local<v8::Value> value) {
  return FromJSON<NSDictionary>(value, @"error parsing attributeMap", @"attributemMap must be an NSDictionary");
}

}  // namespace

void updateMainMenuMenuItemWithCommandId(const ScriptArguments& args) {
  NSDictionary* attributes = ToAttributeMap(args[1]);
  NSNumber* commandId = [NSNumber numberWithInt:ToInteger(args[0])];
  const bool isUpdated = attributes != nil && TsMainMenuUpdateMenuItemWithCommandId(commandId, attributes);
  args.GetReturnValue().Set(isUpdated ? 1 : 0);
}

void updateMainMenuMenuItem(const ScriptArguments& args) {
  NSArray* path = FromJSON<NSArray>(args[0], @"error navigationPath", @"navigationPath must be an NSArray");
  NSDictionary* attributes = path != nil ? ToAttributeMap(args[1]) : nil;
  const bool isUpdated = attributes != nil && TsMainMenuUpdateMenuItem(path, attributes);
  args.GetReturnValue().Set(isUpdated ? 1 : 0);
}

void setupMenuWillShowNotification(const ScriptArguments&) { TsSetupAppMenuNeedsUpdateNotification(); }

void setStatusItemTitle(const ScriptArguments& args) {
  TsStatusItemController* controller = [TsStatusItemController sharedInstance];
  [controller setHasErrors:args[1]->IsTrue()];
  [controller setTitle:args[0]->IsString() ? convertToNSString(args[0]) : nil];
}
