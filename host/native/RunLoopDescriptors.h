#pragma once

#import <Foundation/NSPort.h>
#import <Foundation/NSRunLoop.h>

#include <map>
#include <utility>

#include "Base/Ref.h"
#include "native/EpollSet.h"

// What the main thread's NSRunLoop waits for in its default mode.
//
// NSRunLoop doesn't tell, so its registration methods are taken over, for the whole process and for good. Only what is
// registered after Install() is seen. Main thread only.
class RunLoopDescriptors {
 public:
  // The one instance, which takes the methods over when it is first asked for.
  static RunLoopDescriptors& Shared();

  RunLoopDescriptors(const RunLoopDescriptors&) = delete;
  RunLoopDescriptors& operator=(const RunLoopDescriptors&) = delete;

  // The descriptors now, with the epoll events to wait for.
  [[nodiscard]] EpollSet::Events Collect();

  // Whether Collect() may give something else than when this was last asked. A descriptor that was closed and opened
  // again under the same number counts.
  [[nodiscard]] bool TakeChange();

 private:
  struct Source {
    int count = 0;
    Ref<NSPort> port;  // for sources that are ports
  };

  RunLoopDescriptors();

  static void AddEvent(id self, SEL command, void* data, RunLoopEventType type, id watcher, NSString* mode);
  static void RemoveEvent(id self, SEL command, void* data, RunLoopEventType type, NSString* mode, BOOL all);

  void Add(void* data, RunLoopEventType type);
  void Remove(void* data, RunLoopEventType type, bool all);
  [[nodiscard]] bool IsObserved(id runLoop, NSString* mode) const;

  NSRunLoop* const mainRunLoop_;  // lives as long as its thread
  const int wakeDescriptor_;
  decltype(&AddEvent) originalAddEvent_ = nullptr;
  decltype(&RemoveEvent) originalRemoveEvent_ = nullptr;
  std::map<std::pair<void*, RunLoopEventType>, Source> sources_;
  bool changed_ = true;
};
