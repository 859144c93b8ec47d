#include "Application/AtomApplication.h"

void TsInstallApplicationPatch() {}
