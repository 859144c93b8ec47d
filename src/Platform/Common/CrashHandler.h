#pragma once

#include "Platform/CrashReporter.h"

namespace tessaro::platform {

// Handles the signals of crashes from now on: writes the crash to `record`, an empty file, and passes the signal on to
// the handler that was installed before. Once in a process; the calling thread gets a signal stack. False, with errno,
// when the handlers can't be installed.
[[nodiscard]] bool HandleCrashes(int record, CrashReporter::FaultClaim claim) noexcept;

}  // namespace tessaro::platform
