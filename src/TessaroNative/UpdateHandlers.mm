#include "Application/TsApplicationUpdate.h"
#include "Application/TsRelease.h"
#include "Extensions/NSApplication+TsBundle.h"
#include "TessaroNative/Handlers.h"
#include "TessaroNative/ReturnValues.h"
#include "Utilities/TsCallbackSetters.h"
#include "Utilities/TsLog.h"

void checkForUpdates(const v8::FunctionCallbackInfo<v8::Value>& args) {
  TsApplicationUpdate* update = [TsApplicationUpdate sharedInstance];
  if (args[0]->IsTrue()) {
    [update checkForUpdatesInBackground:args[1]->IsTrue()];
  } else {
    [update checkForUpdates];
  }
}

void setAppcastParameterCallback(const v8::FunctionCallbackInfo<v8::Value>& args) {
  SetAppcastParameterCallback(args[0]);
  [[TsApplicationUpdate sharedInstance] setParameterCallback:TsFeedParametersFromScript];
}

void fetchAppcast(const v8::FunctionCallbackInfo<v8::Value>&) { [[TsApplicationUpdate sharedInstance] fetchAppcast]; }

void getBuildNumber(const v8::FunctionCallbackInfo<v8::Value>& args) {
  if (NSString* number = [NSApplication ts_bundleVersion]) return ReturnString(args, number);
  TsLogWarning(@"Couldn't get build number");
  args.GetReturnValue().SetNull();
}

void getReleaseString(const v8::FunctionCallbackInfo<v8::Value>& args) { ReturnString(args, TsGetRelease()); }
