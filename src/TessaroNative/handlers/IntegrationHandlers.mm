#import <Foundation/Foundation.h>

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#import "Integrations/TsClipTargets.h"
#include "Integrations/TsClippers.h"
#import "Integrations/TsPDFServices.h"
#import "Integrations/TsTiming.h"
#include "Platform/TaskQueues.h"
#include "Services/TsServicesProvider.h"
#include "Sharing/TsSharing.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsJSON.h"

namespace platform = tessaro::platform;

namespace {

// Reads the texts of a script object; a getter that throws gives nil.
class ObjectReader {
 public:
  ObjectReader(v8::Isolate* isolate, v8::Local<v8::Object> object)
      : isolate_(isolate), context_(isolate->GetCurrentContext()), object_(object), catcher_(isolate) {}

  [[nodiscard]] Ref<NSString> String(const char* key) const { return TsCopyString(isolate_, Value(key)); }

  [[nodiscard]] Ref<NSMutableArray> Strings(const char* key) const {
    auto strings = Adopt([[NSMutableArray alloc] init]);
    const auto value = Value(key);
    if (!value->IsArray()) return strings;
    const auto array = value.As<v8::Array>();
    for (std::uint32_t i = 0; i < array->Length(); ++i) {
      v8::Local<v8::Value> element;
      if (!array->Get(context_, i).ToLocal(&element)) return strings;
      if (const auto string = TsCopyString(isolate_, element)) [strings addObject:string];
    }
    return strings;
  }

 private:
  [[nodiscard]] v8::Local<v8::Value> Value(const char* key) const {
    v8::Local<v8::Value> value;
    const auto name = v8::String::NewFromUtf8(isolate_, key).ToLocalChecked();
    return object_->Get(context_, name).ToLocal(&value) ? value : v8::Undefined(isolate_).As<v8::Value>();
  }

  v8::Isolate* isolate_;
  v8::Local<v8::Context> context_;
  v8::Local<v8::Object> object_;
  v8::TryCatch catcher_;
};

TsClippedPage PageOf(v8::Isolate* isolate, v8::Local<v8::Object> object) {
  const ObjectReader page(isolate, object);
  return {.url = page.String("url"),
          .webURL = page.String("web-url"),
          .title = page.String("title"),
          .html = page.String("html"),
          .htmlPath = page.String("html-path"),
          .account = page.String("account"),
          .emlPath = page.String("eml-path"),
          .attachments = page.Strings("attachments")};
}

NSArray* AskTimingCallback() {
  NSString* text = TsCallback(TsSlot::TimeTracker).CallForString({});
  NSError* error = nil;
  if (NSArray* list = As<NSArray>(TsConvertFromJSONString(text, &error))) return list;
  TsLogWarning(@"Couldn't get valid result from sCallback %@", error);
  return @[];
}

}  // namespace

void installedClipperApps(const ScriptArguments& args) {
  NSString* json = TsConvertToJSONString(TsInstalledClippers());
  if (json == nil) TsLogWarning(@"Couldn't convert to JSON");
  ReturnString(args, json);
}

void clipPage(const ScriptArguments& args) {
  TsClipPage(convertToNSString(args[0]), PageOf(args.GetIsolate(), args[1].As<v8::Object>()));
}

void importIntoApplication(const ScriptArguments& args) {
  TsImportIntoApplication(convertToNSString(args[0]), convertToNSString(args[1]));
}

void printPath(const ScriptArguments& args) {
  static Forever<platform::SerialQueue> printing;
  printing->Post(
      [path = TsCopyString(args.GetIsolate(), args[0])] { [TsPreview printFile:[NSURL fileURLWithPath:path]]; });
}

void registerAppleEventForTimingApp(const ScriptArguments& args) {
  TsCallbackSlot& callback = TsCallback(TsSlot::TimeTracker);
  if (callback.IsSet()) {
    TsLogWarning(@"Cannot register app event listener twice");
    return;
  }
  callback.Set(args[0]);
  [TsTiming start:AskTimingCallback];
}

void uninstallPDFServices(const ScriptArguments&) { [[TsPDFServices sharedInstance] uninstall]; }

void HandlePerformService(const ScriptArguments& args) {
  TsPerformService(convertToNSString(args[0]), convertToNSString(args[1]));
}

void shareFiles(const ScriptArguments& args) {
  NSWindow* window = ToWindow(args[0]);
  if (window == nil) return TsLogError(@"Need a window to share files from");
  NSArray* paths = FromJSON<NSArray>(args[1], @"paths");
  NSDictionary* place = FromJSON<NSDictionary>(args[2], @"rectangle");
  if (paths == nil || place == nil) return;
  TsShareFiles(window, paths, place);
}
