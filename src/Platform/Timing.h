#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Base/Result.h"

namespace tessaro::platform {

using TimingAnswer = std::function<std::vector<std::string>()>;

// Answers the Timing application's request for the user's current work, until the process ends. Fails when requests
// can't arrive at the moment; they are answered as soon as they can.
//
// `answer` is called on the main thread and must not throw; its texts are UTF-8. Main thread only; call it once.
[[nodiscard]] Result<void> ServeTiming(const std::string& applicationIdentifier, TimingAnswer answer);

}  // namespace tessaro::platform
