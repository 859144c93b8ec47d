#import <Foundation/Foundation.h>

#include "Base/TsLog.h"
#include "Platform/Cocoa.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#import "Toolbar/TsToolbarController.h"
#include "WebView/TsWebContentsView.h"
#include "Window/WindowUtils.h"

namespace {

// nil when there is no toolbar for the number.
TsToolbarController* ControllerOf(const ScriptArguments& args) {
  return [TsToolbarController toolbarControllerForWindowId:ToInteger(args[0])];
}

float Coordinate(NSDictionary* point, NSString* name) { return [As<NSNumber>([point objectForKey:name]) floatValue]; }

// Other objects would raise when they are used as paths.
bool AreTexts(NSArray* paths) {
  for (id path in paths) {
    if (As<NSString>(path) == nil) return false;
  }
  return true;
}

}  // namespace

// Windows were once kept from redrawing while they were rearranged; scripts still say when that is over.
void reenableWindowUpdates(const ScriptArguments&) {}

void hasMainWindow(const ScriptArguments& args) { args.GetReturnValue().Set([NSApp mainWindow] != nil); }

void hasKeyWindow(const ScriptArguments& args) { args.GetReturnValue().Set([NSApp keyWindow] != nil); }

void hasSheets(const ScriptArguments& args) { args.GetReturnValue().Set([[ToWindow(args[0]) sheets] count] != 0); }

void closeMainWindow(const ScriptArguments&) { [[NSApp mainWindow] close]; }

void closeKeyWindow(const ScriptArguments&) { [[NSApp keyWindow] close]; }

void hideWindowContent(const ScriptArguments& args) {
  NSWindow* window = ToWindow(args[0]);
  if (window == nil) return TsLogError(@"Need a view with a window to to hide window content: %@", window);
  TsHideWindowContent(window, ToInteger(args[1]));
}

void TsResizeWindowContent(const ScriptArguments& args) {
  NSWindow* window = ToWindow(args[0]);
  if (window == nil) return TsLogError(@"Need a window to change content size");
  [window ts_resizeContent:NSMakeSize(ToInteger(args[1]), ToInteger(args[2])) animate:YES];
}

void addToolbarToWindow(const ScriptArguments& args) {
  NSWindow* window = ToWindow(args[0]);
  if (window == nil) return TsLogError(@"Need a view with a window to add a toolbar: %@", window);
  NSDictionary* definition =
      FromJSON<NSDictionary>(args[2], @"error parsing options", @"toolbar options must be a NSDictionary");
  if (definition == nil) return;
  const auto controller = Adopt([[TsToolbarController alloc] initWithDictionary:definition]);
  [controller addToWindow:window withId:ToInteger(args[1])];
}

void validateToolbarItems(const ScriptArguments& args) { [[ControllerOf(args) toolbar] validateVisibleItems]; }

void selectToolbarItem(const ScriptArguments& args) {
  [[ControllerOf(args) toolbar] setSelectedItemIdentifier:convertToNSString(args[1])];
}

void toggleToolbarVisibility(const ScriptArguments& args) { [[ControllerOf(args) window] toggleToolbarShown:nil]; }

void isToolbarVisible(const ScriptArguments& args) {
  args.GetReturnValue().Set(static_cast<bool>([[ControllerOf(args) toolbar] isVisible]));
}

void customizeToolbar(const ScriptArguments& args) { [[ControllerOf(args) toolbar] runCustomizationPalette:nil]; }

void changeImageOfToolbarItem(const ScriptArguments& args) {
  [ControllerOf(args) changeToolbarItemWithIdentifier:convertToNSString(args[1]) image:convertToNSString(args[2])];
}

void showAddTabButton(const ScriptArguments& args) { [ControllerOf(args) showAddTabButton]; }

void hideAddTabButton(const ScriptArguments& args) { [ControllerOf(args) hideAddTabButton]; }

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
