#include "Platform/Common/AutoreleaseScope.h"

#import <Foundation/Foundation.h>

#include "Base/TsLog.h"

namespace tessaro::platform {

void WithAutoreleasePool(const std::function<void()>& work) noexcept {
  @autoreleasepool {
    @try {
      work();
    } @catch (NSException* exception) {
      TsLogError(@"A task failed with %@: %@", [exception name], [exception reason]);
    }
  }
}

}  // namespace tessaro::platform
