#include "Platform/macOS/Guarded.h"

#include "Base/TsString.h"

namespace tessaro::platform {

std::string Guarded(const std::function<void()>& work) noexcept {
  @autoreleasepool {
    @try {
      work();
    } @catch (NSException* exception) {
      return TsStdString([exception name]) + ": " + TsStdString([exception reason]);
    }
  }
  return {};
}

std::string ReasonOf(NSError* error) {
  if (error == nil) return "the system gave no reason";
  return TsStdString([error domain]) + " " + std::to_string([error code]) + ": " +
         TsStdString([error localizedDescription]);
}

}  // namespace tessaro::platform
