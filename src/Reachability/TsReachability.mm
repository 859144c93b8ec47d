#include "Reachability/TsReachability.h"

void TsStartReachabilityMonitoring(std::function<void(bool connected)>) {}
