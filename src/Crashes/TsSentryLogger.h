#pragma once

#import <Foundation/Foundation.h>

#include "Base/TsLog.h"
#include "Platform/CrashReporter.h"

// A message was logged: {"level": "error", "warning", "info" or "debug", "message": a text}.
extern NSString* const TsSentryBreadcrumbNotification;

// An earlier process has crashed: {"event": TsSerialisedEvent()}.
extern NSString* const TsSentryEventNotification;

// Passes log messages and crash events on to the host, which sends them. Notifications are posted on the main queue.
// Their observers must not log, which would post the next breadcrumb.
class TsSentryLogger final : public TsLogger {
 public:
  void Log(const TsLogMessage& message) noexcept override;

  static void PostEventAsNotification(const tessaro::platform::CrashEvent& event);
};

// The version of the running application for crash events: "3.1 (412)".
[[nodiscard]] NSString* TsGetRelease();

// The event as the service expects it in JSON.
[[nodiscard]] NSDictionary* TsSerialisedEvent(const tessaro::platform::CrashEvent& event);

// Starts recording crashes, posting log messages as breadcrumbs, and reporting the crashes of earlier processes. Once
// in a process; failures are logged. `claim`: see CrashReporter.
void TsSetUpCrashReporter(tessaro::platform::CrashReporter::FaultClaim claim);

// Crashes the process, if the crash reporter was set up.
void TsTestCrash();
