#include "native/Host.h"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSDisplayServer.h>
#include <unistd.h>

#import "native/AtomApplication.h"
#import "native/HostApplicationDelegate.h"
#include "native/MainBundle.h"
#include "native/MainMenu.h"
#import "native/NotificationRelay.h"
#import "native/RunLoopProbe.h"

namespace {

// Linux users' modifier keys, menus inside the windows, no icon windows on the desktop.
NSDictionary* LinuxDefaults() {
  return @{
    @"GSFirstCommandKey" : @"Control_L",
    @"GSSecondCommandKey" : @"Control_R",
    @"GSFirstAlternateKey" : @"Alt_L",
    @"GSSecondAlternateKey" : @"Alt_R",
    @"GSFirstControlKey" : @"Super_L",
    @"GSSecondControlKey" : @"Super_R",
    @"NSMenuInterfaceStyle" : @"NSWindows95InterfaceStyle",
    @"GSSuppressAppIcon" : [NSNumber numberWithBool:YES],
  };
}

// GNUstep would show a modal panel, which stops script for ever.
void LogUncaughtException(NSException* exception) {
  NSLog(@"Ending because of an uncaught %@: %@", [exception name], [exception reason]);
}

void InitializeProcessInformation(NSString* name) {
  char* arguments[] = {const_cast<char*>([name UTF8String]), nullptr};
  [NSProcessInfo initializeWithArguments:arguments count:1 environment:environ];
}

}  // namespace

Host::Host(napi_env env, uv_loop_t* loop)
    : script_(env),
      events_(script_),
      pump_(loop, script_, RunLoopDescriptors::Shared()),
      probe_(Adopt([[RunLoopProbe alloc] initWithEvents:&events_])) {}

// The application object stays until the process ends.
Host::~Host() { [NSApp setDelegate:nil]; }

Host::Display Host::Start(const StartOptions& options) {
  if (!isStarted_) {
    isStarted_ = true;
    InitializeProcess(options);
    if (ConnectToDisplay()) Launch();
    NSSetUncaughtExceptionHandler(LogUncaughtException);
    pump_.Start(display_.get(), [this] { LoseDisplay(); });
  }
  return {.isAvailable = !missingDisplayReason_, .reason = missingDisplayReason_};
}

void Host::InitializeProcess(const StartOptions& options) {
  InitializeProcessInformation(options.name);
  SetMainBundle([NSBundle bundleWithPath:options.bundlePath]);
  FollowEnvironmentLanguages();
  [[NSUserDefaults standardUserDefaults] registerDefaults:LinuxDefaults()];
  relay_ = Adopt([[NotificationRelay alloc] initWithEvents:&events_]);
  delegate_ = Adopt([[HostApplicationDelegate alloc] initWithEvents:&events_]);
}

bool Host::ConnectToDisplay() {
  @try {
    [AtomApplication sharedApplication];
    return true;
  } @catch (NSException* exception) {
    missingDisplayReason_ = Retain([exception reason]);
    return false;
  }
}

void Host::Launch() {
  display_ = std::make_unique<DisplayConnection>([GSCurrentServer() serverDevice]);
  windows_ = std::make_unique<WindowList>(events_);
  [NSApp setDelegate:delegate_];
  [NSApp setMainMenu:MakeMainMenu()];
  [NSApp finishLaunching];
}

void Host::Stop() {
  pump_.Stop();
  events_.Clear();
}

WindowList& Host::windows() {
  if (missingDisplayReason_) [NSException raise:@"NoDisplay" format:@"%@", missingDisplayReason_.get()];
  if (!windows_) [NSException raise:@"NotStarted" format:@"The host has not been started"];
  return *windows_;
}

void Host::LoseDisplay() {
  missingDisplayReason_ = Retain(@"The connection to the display is lost");
  NSLog(@"%@", missingDisplayReason_.get());
  events_.Emit(@"display-lost", nil);
}
