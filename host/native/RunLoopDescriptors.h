#pragma once

#import <Foundation/NSPort.h>
#import <Foundation/NSRunLoop.h>

#include <map>
#include <utility>

#include "Base/Ref.h"
#include "native/EpollSet.h"

// The descriptors that the main thread's NSRunLoop waits for in its default mode.
//
// NSRunLoop has no query for them, so its registration methods are replaced, for the life of the process. Registrations
// before Install() are missed. Main thread only.
class RunLoopDescriptors {
 public:
  // The one instance, which replaces the methods on first use.
  static RunLoopDescriptors& Shared();

  RunLoopDescriptors(const RunLoopDescriptors&) = delete;
  RunLoopDescriptors& operator=(const RunLoopDescriptors&) = delete;

  // The descriptors now, with the epoll events to wait for.
  [[nodiscard]] EpollSet::Events Collect();

  // Whether Collect() may return something new since the last call, including a descriptor that was closed and opened
  // again under the same number.
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
