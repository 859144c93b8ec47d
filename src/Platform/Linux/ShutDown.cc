#include "Platform/ShutDown.h"

#include "Platform/Linux/SessionBus.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

void ShutDown() {
  SessionBus::Shared().Close();
  MainQueue::Shared().Detach();
}

}  // namespace tessaro::platform
