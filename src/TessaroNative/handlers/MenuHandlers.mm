#import <Foundation/Foundation.h>

#include "Base/TsLog.h"
#include "Menu/TsMainMenu.h"
#include "TessaroNative/handlers/Handlers.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"

namespace {

NSDictionary* ToAttributeMap(v8::Local<v8::Value> value) {
  NSString* text = convertToNSString(value);
  NSError* error = nil;
  id attributes = TsConvertFromJSONString(text, &error);
  if (attributes == nil) {
    TsLogError(@"error parsing attributeMap %@ (%@)", text, error);
    return nil;
  }
  if ([attributes isKindOfClass:[NSDictionary class]]) return attributes;
  TsLogError(@"attributemMap must be an NSDictionary (%@)", attributes);
  return nil;
}

NSArray* ToNavigationPath(v8::Local<v8::Value> value) {
  NSString* text = convertToNSString(value);
  NSError* error = nil;
  id path = TsConvertFromJSONString(text, &error);
  if (path == nil) {
    TsLogError(@"error navigationPath %@ (%@)", text, error);
    return nil;
  }
  if ([path isKindOfClass:[NSArray class]]) return path;
  TsLogError(@"navigationPath must be an NSArray (%@)", path);
  return nil;
}

}  // namespace

void updateMainMenuMenuItemWithCommandId(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSDictionary* attributes = ToAttributeMap(args[1]);
  NSNumber* commandId = [NSNumber numberWithInt:args[0].As<v8::Int32>()->Value()];
  const bool isUpdated = attributes != nil && TsMainMenuUpdateMenuItemWithCommandId(commandId, attributes);
  args.GetReturnValue().Set(isUpdated ? 1 : 0);
}

void updateMainMenuMenuItem(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSArray* path = ToNavigationPath(args[0]);
  NSDictionary* attributes = path != nil ? ToAttributeMap(args[1]) : nil;
  const bool isUpdated = attributes != nil && TsMainMenuUpdateMenuItem(path, attributes);
  args.GetReturnValue().Set(isUpdated ? 1 : 0);
}

void setupMenuWillShowNotification(const v8::FunctionCallbackInfo<v8::Value>&) {
  TsSetupAppMenuNeedsUpdateNotification();
}
