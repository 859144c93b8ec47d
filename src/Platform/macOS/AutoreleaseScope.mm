#include "Platform/Common/AutoreleaseScope.h"

#import <Foundation/Foundation.h>

#include "Base/TsLog.h"

// Foundation's pools and exceptions; any thread. Foundation knows every thread by itself.
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

CocoaThread::CocoaThread() = default;
CocoaThread::~CocoaThread() = default;

}  // namespace tessaro::platform
