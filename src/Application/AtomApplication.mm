#include "Application/AtomApplication.h"

#include "Platform/Menus.h"
#include "Platform/WindowServer.h"

void TsInstallApplicationPatch() {
  if (tessaro::platform::IsWindowServerAvailable()) tessaro::platform::CompleteMenus();
}
