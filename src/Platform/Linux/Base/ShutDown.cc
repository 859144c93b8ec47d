#include "Platform/ShutDown.h"

#include "Platform/HTTPTransfer.h"
#include "Platform/Linux/Alerts/UserNotificationDelivery.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Platform/Linux/Keyboard/KeyGrabs.h"
#include "Platform/Linux/Network/NetworkChanges.h"
#include "Platform/MainQueue.h"
#include "Platform/SecretStore.h"
#include "Platform/TimeTracker.h"
#include "Platform/Updater.h"

namespace tessaro::platform {

void ShutDown() {
  SecretStore::Shared().Close();
  Updater::Shared().ShutDown();
  HTTPTransfer::ShutDown();
  NetworkChanges::Shared().Close();
  KeyGrabs::Shared().Close();
  EndUserNotificationDelivery();
  StopServingTimeTracker();
  SessionBus::Shared().Close();
  MainQueue::Shared().Detach();
}

}  // namespace tessaro::platform
