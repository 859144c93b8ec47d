#include "Services/TsServicesProvider.h"

void TsRegisterServicesProvider(NSApplication*) {}
