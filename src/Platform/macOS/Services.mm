#include "Platform/Services.h"

#import <AppKit/AppKit.h>

#include "Base/TsString.h"
#include "Platform/macOS/Guarded.h"

// NSPerformService(). It answers yes or no without a reason, and may show the service's own windows. Main thread only;
// services that script other applications ask the user for consent.
namespace tessaro::platform {

Result<void> PerformService(const std::string& service, const std::string& pasteboard) {
  bool isPerformed = false;
  const std::string failure = Guarded([&] {
    NSPasteboard* contents = [NSPasteboard pasteboardWithName:TsNSString(pasteboard)];
    isPerformed = NSPerformService(TsNSString(service), contents);
  });
  if (!failure.empty()) return Fail(failure);
  if (!isPerformed) return Fail("no application offers the service, or the service failed");
  return {};
}

}  // namespace tessaro::platform
