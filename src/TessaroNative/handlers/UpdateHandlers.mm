#include <csignal>

#include "Application/TsApplicationUpdate.h"
#include "Base/TsLog.h"
#include "Crashes/TsSentryLogger.h"
#include "Extensions/NSApplication+TsBundle.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#include "Utilities/TsCallbackSlot.h"

// Node.js does not install the header that declares this.
namespace v8 {
V8_EXPORT bool TryHandleWebAssemblyTrapPosix(int signal, siginfo_t* information, void* context);
}

namespace {

// WebAssembly checks its bounds by memory faults: those are no crashes.
bool IsTrapOfEngine(int signal, void* information, void* context) {
  return v8::TryHandleWebAssemblyTrapPosix(signal, static_cast<siginfo_t*>(information), context);
}

}  // namespace

void checkForUpdates(const ScriptArguments& args) {
  TsApplicationUpdate* update = [TsApplicationUpdate sharedInstance];
  if (args[0]->IsTrue()) {
    [update checkForUpdatesInBackground:args[1]->IsTrue()];
  } else {
    [update checkForUpdates];
  }
}

void setAppcastParameterCallback(const ScriptArguments& args) {
  TsCallback(TsSlot::AppcastParameter).Set(args[0]);
  [[TsApplicationUpdate sharedInstance] setParameterCallback:TsFeedParametersFromScript];
}

void fetchAppcast(const ScriptArguments&) { [[TsApplicationUpdate sharedInstance] fetchAppcast]; }

void getBuildNumber(const ScriptArguments& args) {
  NSString* number = [NSApplication ts_bundleVersion];
  if (number == nil) TsLogWarning(@"Couldn't get build number");
  ReturnStringOrNull(args, number);
}

void getReleaseString(const ScriptArguments& args) { ReturnString(args, TsGetRelease()); }

void setupCrashReporter(const ScriptArguments&) { TsSetUpCrashReporter(IsTrapOfEngine); }

void testCrash(const ScriptArguments&) { TsTestCrash(); }
