#include "StatusItem/TsStatusItemController.h"

void TsActivateStatusItem() {}

void TsListenForStatusItemMenuNeedsUpdate() {}
