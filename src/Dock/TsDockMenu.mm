#include "Dock/TsDockMenu.h"

void TsInstallDockMenuPatch() {}
