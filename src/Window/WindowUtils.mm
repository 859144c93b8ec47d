#include "Window/WindowUtils.h"

void TsInstallDelegateMethods() {}

void TsListenForWindowNotifications() {}
