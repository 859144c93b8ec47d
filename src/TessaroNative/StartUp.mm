#include "TessaroNative/StartUp.h"

#include <cerrno>
#include <vector>

#include "AppleScript/TsASOutgoingMessage.h"
#include "Application/AtomApplication.h"
#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Dock/TsDockMenu.h"
#include "Extensions/NSApplication+TsBundle.h"
#include "Integrations/TsPDFServices.h"
#include "Notifications/TsUserNotification.h"
#include "Platform/Applications.h"
#include "Platform/Cocoa.h"
#include "Platform/MainQueue.h"
#include "Platform/OperatingSystem.h"
#include "Platform/ScriptingService.h"
#include "Platform/StandardDirectories.h"
#include "Platform/SystemAppearance.h"
#include "Platform/WindowServer.h"
#include "Reachability/TsReachability.h"
#include "Services/TsServicesProvider.h"
#include "StatusItem/TsStatusItemController.h"
#include "TessaroNative/FunctionTable.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsEngineEntry.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsNotificationObserver.h"
#include "WebView/TsWebContentsView.h"
#include "Window/WindowUtils.h"

namespace platform = tessaro::platform;

namespace {

void SendOutgoingMessageToScript(NSNotification* notification) {
  const TsCallbackSlot& callback = TsCallback(TsSlot::ComposeOutgoingMessage);
  if (!callback.IsSet()) return;
  NSString* message =
      TsConvertToJSONString([[notification userInfo] objectForKey:TsComposeOutgoingMessageNotificationMessageKey]);
  NSString* options =
      TsConvertToJSONString([[notification userInfo] objectForKey:TsComposeOutgoingMessageNotificationOptionsKey]);
  if (message == nil || options == nil) {
    TsLogWarning(@"Could get message or options");
    return;
  }
  callback.Call({message, options});
}

void TsListenForComposeOutgoingMessage() {
  TsObserveOnMainQueue(TsComposeOutgoingMessageNotification, SendOutgoingMessageToScript);
  platform::OfferScripting(TsComposeMailtoLink);
}

void TsListenForServiceProviderSearch() {
  TsObserveOnMainQueue(TsServiceProviderSearchNotification, [](NSNotification* notification) {
    TsCallback(TsSlot::SearchService).Call({static_cast<NSString*>([notification object])});
  });
}

void TsMonitorReachability() {
  TsStartReachabilityMonitoring([] {
    platform::MainQueue::Shared().Post([] {
      const TsCallbackSlot& callback = TsCallback(TsSlot::Reachability);
      if (callback.IsSet()) callback.Call({TsIsNetworkReachable()});
    });
  });
}

void TsLogAppearance() {
  TsLogDebug(@"Dark Mode: %d %@ (%d)", TsIsDarkMode(), [NSApplication ts_osVersion],
             [NSApplication ts_isMojaveOrBetter]);
}

#define STEP(function) \
  { #function, function }

constexpr StartUpStep kStartUpSequence[] = {
    STEP(TsSetupLogging),
    {"TsSetApplicationIsolate", [] { TsSetApplicationIsolate(v8::Isolate::GetCurrent()); }},
    STEP(TsInstallApplicationPatch),
    STEP(TsDisableGPUIfNeeded),
    STEP(TsDisableNativeTabs),
    STEP(TsInstallDockMenuPatch),
    STEP(TsInstallWebContentsViewPatch),
    STEP(TsInstallDelegateMethods),
    STEP(TsListenForWindowNotifications),
    STEP(TsListenForComposeOutgoingMessage),
    STEP(TsListenForServiceProviderSearch),
    STEP(TsMonitorReachability),
    {"TsRegisterServices", [] { TsRegisterServicesProvider(NSApp); }},
    STEP(TsActivateStatusItem),
    STEP(TsListenForStatusItemMenuNeedsUpdate),
    {"PFMoveToApplicationsFolderIfNecessary", platform::OfferMoveToApplicationsFolder},
    {"TsInstallPDFServices", [] { [[TsPDFServices sharedInstance] install]; }},
    {"TsCreateUserNotification", [] { [TsUserNotification sharedInstance]; }},
    STEP(TsLogAppearance),
};

#undef STEP

std::vector<const char*>& StepsRun() {
  static Forever<std::vector<const char*>> steps;
  return *steps;
}

// A step that fails must not keep the later ones from running.
void Run(const StartUpStep& step) {
  @try {
    step.run();
  } @catch (NSException* exception) {
    TsLogError(@"%s failed with %@: %@", step.name, [exception name], [exception reason]);
  }
  StepsRun().push_back(step.name);
}

// The environment is going away while the process may live on: nothing of ours may reach for the engine after this.
void EndWithEnvironment(void*) {
  @autoreleasepool {
    EndAll();
  }
}

void StartUp(v8::Isolate* isolate) {
  platform::MainQueue::Shared().Attach();
  node::AddEnvironmentCleanupHook(isolate, EndWithEnvironment, nullptr);
  // process.exit() runs no cleanup hooks.
  node::AtExit(node::GetCurrentEnvironment(isolate->GetCurrentContext()), EndWithEnvironment, nullptr);
  for (const StartUpStep& step : kStartUpSequence) Run(step);
}

void ThrowError(v8::Isolate* isolate, const char* text) {
  isolate->ThrowException(v8::Exception::Error(v8::String::NewFromUtf8(isolate, text).ToLocalChecked()));
}

}  // namespace

void Init(v8::Local<v8::Object> exports, v8::Local<v8::Value>) {
  if (!platform::MainQueue::IsMainThread()) {
    return ThrowError(v8::Isolate::GetCurrent(), "TessaroNative works on the main thread only, not in a worker");
  }
  @autoreleasepool {
    if (StepsRun().empty()) StartUp(v8::Isolate::GetCurrent());
    RegisterFunctions(exports);
    TsLogInfo(@"*** Tessaro Native Module Started ***");
  }
}

std::span<const StartUpStep> StartUpSequence() { return kStartUpSequence; }

std::span<const char* const> StartUpStepsRun() { return StepsRun(); }

void TsSetupLogging() {
  TsLogFacility& facility = TsLogFacility::Shared();
  NameMainThread();
  facility.AddTerminalLogger();
  const auto directory = platform::LogDirectory(TsStdString([[NSProcessInfo processInfo] processName]));
  const bool hasFile = facility.AddDailyFileLogger(directory);
  TsLogInfo(@"Native Module logging initialized!");
  if (!hasFile) TsLogWarning(@"There is no log file, because none can be written in %s", directory.c_str());
}

int IsRunningInsideRosetta2() {
  const auto translated = platform::ReadKernelVariable("sysctl.proc_translated");
  return TsTranslationState(translated.value, translated.error);
}

int TsTranslationState(int value, int error) {
  if (error == 0) return value;
  return error == ENOENT ? 0 : -1;
}

void TsDisableGPUIfNeeded() { TsDisableGPUUnlessNative(IsRunningInsideRosetta2()); }

void TsDisableGPUUnlessNative(int insideRosetta2) {
  // An unknown answer counts as translated: software rendering is slow, a broken window is worse.
  if (insideRosetta2 == 0) {
    TsLogInfo(@"Process is running natively, keeping DisableGPU unchanged");
    return;
  }
  [[NSUserDefaults standardUserDefaults] setBool:YES forKey:@"DisableGPU"];
  TsLogInfo(@"Process is running inside Rosetta2, set DisableGPU=YES");
}

void TsDisableNativeTabs() {
  // AppKit's window class can't be touched before there is a window server to ask for its fonts.
  if (platform::IsWindowServerAvailable()) [NSWindow setAllowsAutomaticWindowTabbing:NO];
}

bool TsIsDarkMode() { return platform::IsDarkMode(); }
