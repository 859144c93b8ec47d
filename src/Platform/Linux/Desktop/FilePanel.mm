#include "Platform/FilePanel.h"

#include <utility>

#include "Platform/Linux/Desktop/TsFilePanel.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

void AskForFiles(NSWindow* window, FileRequest request, FileAnswer answer) {
  if (TsFilePanel* present = [TsFilePanel panelOfWindow:window]) {
    [present makeKeyAndOrderFront:nil];
    MainQueue::Shared().Post([answer = std::move(answer)] { answer({}); });
    return;
  }
  const auto panel = Adopt([[TsFilePanel alloc] initWithRequest:std::move(request) answer:std::move(answer)]);
  [panel showOver:window];
}

}  // namespace tessaro::platform
