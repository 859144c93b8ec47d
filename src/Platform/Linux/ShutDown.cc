#include "Platform/ShutDown.h"

#include "Platform/HTTPTransfer.h"
#include "Platform/Linux/SessionBus.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

void ShutDown() {
  HTTPTransfer::ShutDown();
  SessionBus::Shared().Close();
  MainQueue::Shared().Detach();
}

}  // namespace tessaro::platform
