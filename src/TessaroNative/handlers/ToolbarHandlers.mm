#include "Base/TsLog.h"
#include "Platform/Cocoa.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#import "Toolbar/TsToolbar.h"
#import "Toolbar/TsToolbarController.h"

namespace {

// nil when there is no toolbar for the number.
TsToolbarController* ControllerOf(const ScriptArguments& args) {
  return [TsToolbarController toolbarControllerForWindowId:ToInteger(args[0])];
}

}  // namespace

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
