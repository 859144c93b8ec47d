#pragma once

#import <Foundation/Foundation.h>

#include "Base/TsLogging.h"
#include "Platform/CrashReporter.h"

// A message was logged: {"level": "error", "warning", "info" or "debug", "message": a text}.
extern NSString* const TsSentryBreadcrumbNotification;

// An earlier process has crashed: {"event": a dictionary as the service takes it}.
extern NSString* const TsSentryEventNotification;

// Hands log messages and crash events to the host, which sends them. Notifications are posted on the main queue. Their
// observers must not log: that would be a breadcrumb again.
class TsSentryLogger final : public TsLogger {
 public:
  void Log(const TsLogMessage& message) noexcept override;

  static void PostEventAsNotification(const tessaro::platform::CrashEvent& event);
};

// The event in the form of the service, which JSON can hold.
[[nodiscard]] NSDictionary* TsSerialisedEvent(const tessaro::platform::CrashEvent& event);

// From now on crashes are recorded, log messages are breadcrumbs, and the crashes of earlier processes are told. Once
// in a process; what can't be had is logged. `claim` as for the crash reporter.
void TsSetUpCrashReporter(tessaro::platform::CrashReporter::FaultClaim claim);

// Crashes, if the crash reporter was set up.
void TsTestCrash();
