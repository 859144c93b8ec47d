#include <dlfcn.h>

#include "Base/TsLog.h"
#include "Platform/Applications.h"

// The host's LetsMove framework, found by name, as development hosts don't have one. It shows an alert, and restarts
// the application from its new place. Main thread only; the copy may ask for an administrator's password.
namespace tessaro::platform {

void OfferMoveToApplicationsFolder() {
  using Move = void (*)();
  const auto move = reinterpret_cast<Move>(dlsym(RTLD_DEFAULT, "PFMoveToApplicationsFolderIfNecessary"));
  if (move != nullptr) return move();
  TsLogTextInfo("The host has no LetsMove framework: the application stays where it is");
}

}  // namespace tessaro::platform
