#import <Foundation/Foundation.h>

#include "Platform/Common/AutoreleaseScope.h"

namespace tessaro::platform {

CocoaThread::CocoaThread() { GSRegisterCurrentThread(); }
CocoaThread::~CocoaThread() { GSUnregisterCurrentThread(); }

}  // namespace tessaro::platform
