#pragma once

#include <functional>

// Watches the internet connection for the life of the process. `changed` is called with "connected?" at each change,
// on any thread; it must not throw.
void TsStartReachabilityMonitoring(std::function<void(bool connected)> changed);
