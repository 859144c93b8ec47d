#include "Base/TsLog.h"
#include "Platform/Cocoa.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/WindowArgument.h"
#import "Toolbar/TsToolbar.h"
#import "Toolbar/TsToolbarController.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"

namespace {

NSDictionary* ToDefinition(v8::Local<v8::Value> value) {
  NSError* error = nil;
  NSString* text = convertToNSString(value);
  id definition = TsConvertFromJSONString(text, &error);
  if (definition == nil) {
    TsLogError(@"error parsing options %@ (%@)", text, error);
    return nil;
  }
  if ([definition isKindOfClass:[NSDictionary class]]) return definition;
  TsLogError(@"toolbar options must be a NSDictionary (%@)", definition);
  return nil;
}

int ToWindowId(v8::Local<v8::Value> value) { return value.As<v8::Int32>()->Value(); }

// nil when there is no toolbar for the number.
TsToolbarController* ControllerOf(const v8::FunctionCallbackInfo<v8::Value>& args) {
  return [TsToolbarController toolbarControllerForWindowId:ToWindowId(args[0])];
}

}  // namespace

void addToolbarToWindow(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSWindow* window = ToWindow(args[0]);
  if (window == nil) {
    TsLogError(@"Need a view with a window to add a toolbar: %@", window);
    return;
  }
  NSDictionary* definition = ToDefinition(args[2]);
  if (definition == nil) return;
  const auto controller = Adopt([[TsToolbarController alloc] initWithDictionary:definition]);
  [controller addToWindow:window withId:ToWindowId(args[1])];
}

void validateToolbarItems(const v8::FunctionCallbackInfo<v8::Value>& args) {
  [[ControllerOf(args) toolbar] validateVisibleItems];
}

void selectToolbarItem(const v8::FunctionCallbackInfo<v8::Value>& args) {
  [[ControllerOf(args) toolbar] setSelectedItemIdentifier:convertToNSString(args[1])];
}

void toggleToolbarVisibility(const v8::FunctionCallbackInfo<v8::Value>& args) {
  [[ControllerOf(args) window] toggleToolbarShown:nil];
}

void isToolbarVisible(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set(static_cast<bool>([[ControllerOf(args) toolbar] isVisible]));
}

void customizeToolbar(const v8::FunctionCallbackInfo<v8::Value>& args) {
  [[ControllerOf(args) toolbar] runCustomizationPalette:nil];
}

void changeImageOfToolbarItem(const v8::FunctionCallbackInfo<v8::Value>& args) {
  [ControllerOf(args) changeToolbarItemWithIdentifier:convertToNSString(args[1]) image:convertToNSString(args[2])];
}

void showAddTabButton(const v8::FunctionCallbackInfo<v8::Value>& args) { [ControllerOf(args) showAddTabButton]; }

void hideAddTabButton(const v8::FunctionCallbackInfo<v8::Value>& args) { [ControllerOf(args) hideAddTabButton]; }
