#pragma once

#include "Platform/CrashReporter.h"

namespace tessaro::platform {

// Handles the signals that end a process that has crashed, from now on: writes what is known to `record`, an empty
// file, and leaves the signal to whoever handled it before. Once in a process; the calling thread gets a stack of its
// own for it. False when the system refuses, with errno.
[[nodiscard]] bool HandleCrashes(int record, CrashReporter::FaultClaim claim) noexcept;

}  // namespace tessaro::platform
