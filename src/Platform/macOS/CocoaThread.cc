#include "Platform/Common/AutoreleaseScope.h"

// Foundation knows every thread by itself.
namespace tessaro::platform {

CocoaThread::CocoaThread() = default;
CocoaThread::~CocoaThread() = default;

}  // namespace tessaro::platform
