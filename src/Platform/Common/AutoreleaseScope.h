#pragma once

#include <functional>

// The Objective-C run time for plain C++ bodies.
namespace tessaro::platform {

// Runs `work`, which must not throw C++ exceptions, with an autorelease pool. An Objective-C exception ends it and is
// logged.
void WithAutoreleasePool(const std::function<void()>& work) noexcept;

// Makes the current thread one that Foundation knows, for as long as this object lives. GNUstep complains about
// autoreleased objects in any other.
class CocoaThread {
 public:
  CocoaThread();
  ~CocoaThread();
  CocoaThread(const CocoaThread&) = delete;
  CocoaThread& operator=(const CocoaThread&) = delete;
};

}  // namespace tessaro::platform
