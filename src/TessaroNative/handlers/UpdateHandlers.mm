#include <csignal>

#include "Application/TsApplicationUpdate.h"
#include "Base/TsLog.h"
#include "Crashes/TsRelease.h"
#include "Crashes/TsSentryLogger.h"
#include "Extensions/NSApplication+TsBundle.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/ReturnValues.h"
#include "Utilities/TsCallbackSlot.h"

// The engine's own header for it is not among those that Node.js installs.
namespace v8 {
V8_EXPORT bool TryHandleWebAssemblyTrapPosix(int signal, siginfo_t* information, void* context);
}

namespace {

// WebAssembly lets the processor find accesses beyond its memory: such faults are no crashes.
bool IsTrapOfEngine(int signal, void* information, void* context) {
  return v8::TryHandleWebAssemblyTrapPosix(signal, static_cast<siginfo_t*>(information), context);
}

}  // namespace

void checkForUpdates(const v8::FunctionCallbackInfo<v8::Value>& args) {
  TsApplicationUpdate* update = [TsApplicationUpdate sharedInstance];
  if (args[0]->IsTrue()) {
    [update checkForUpdatesInBackground:args[1]->IsTrue()];
  } else {
    [update checkForUpdates];
  }
}

void setAppcastParameterCallback(const v8::FunctionCallbackInfo<v8::Value>& args) {
  TsCallback(TsSlot::AppcastParameter).Set(args[0]);
  [[TsApplicationUpdate sharedInstance] setParameterCallback:TsFeedParametersFromScript];
}

void fetchAppcast(const v8::FunctionCallbackInfo<v8::Value>&) { [[TsApplicationUpdate sharedInstance] fetchAppcast]; }

void getBuildNumber(const v8::FunctionCallbackInfo<v8::Value>& args) {
  if (NSString* number = [NSApplication ts_bundleVersion]) return ReturnString(args, number);
  TsLogWarning(@"Couldn't get build number");
  args.GetReturnValue().SetNull();
}

void getReleaseString(const v8::FunctionCallbackInfo<v8::Value>& args) { ReturnString(args, TsGetRelease()); }

void setupCrashReporter(const v8::FunctionCallbackInfo<v8::Value>&) { TsSetUpCrashReporter(IsTrapOfEngine); }

void testCrash(const v8::FunctionCallbackInfo<v8::Value>&) { TsTestCrash(); }
