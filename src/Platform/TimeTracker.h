#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tessaro::platform {

// Answers the time tracker's question what the user is at work on, for the life of the process. Where applications
// don't send each other Apple events the question comes over the session bus: the method List of the interface
// org.tessaro.Timing at /org/tessaro/Timing, of the name that is the application's identifier.
//
// `answer` is called on the main thread and must not throw. Main thread only. False when the question can't arrive, as
// without a bus or when another process has the name; it is then waited for until it can.
bool ServeTimeTracker(const std::string& applicationIdentifier, std::function<std::vector<std::string>()> answer);

}  // namespace tessaro::platform
