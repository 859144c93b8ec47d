#include "native/RunLoopDescriptors.h"

#import <Foundation/Foundation.h>
#import <objc/runtime.h>
#include <sys/epoll.h>

#include <algorithm>
#include <array>
#include <cstdint>

// Every port that a run loop can wait for implements this, undeclared.
@interface NSPort (Descriptors)
- (void)getFds:(NSInteger*)descriptors count:(NSInteger*)count;
@end

namespace {

template <typename T>
const T* InstanceVariable(id object, const char* name) {
  const Ivar variable = object == nil ? nullptr : class_getInstanceVariable(object_getClass(object), name);
  if (variable == nullptr) return nullptr;
  return reinterpret_cast<const T*>(reinterpret_cast<const char*>(object) + ivar_getOffset(variable));
}

// The pipe by which other threads wake this one (performSelectorOnMainThread:). It is the one descriptor that NSRunLoop
// polls without registering it, and without it such a call would wait for the next timer.
int WakeDescriptor() {
  const id* information = InstanceVariable<id>([NSThread currentThread], "_runLoopInfo");
  const int* descriptor = information == nullptr ? nullptr : InstanceVariable<int>(*information, "inputFd");
  return descriptor == nullptr ? -1 : *descriptor;
}

template <typename Implementation>
Implementation TakeOver(SEL selector, Implementation replacement) {
  const Method method = class_getInstanceMethod([NSRunLoop class], selector);
  return reinterpret_cast<Implementation>(method_setImplementation(method, reinterpret_cast<IMP>(replacement)));
}

std::uint32_t EpollEventsFor(RunLoopEventType type) {
  switch (type) {
    case ET_RDESC:
      return EPOLLIN;
    case ET_WDESC:
      return EPOLLOUT;
    case ET_EDESC:
      return EPOLLPRI;
    default:
      return 0;
  }
}

void AddDescriptorsOf(NSPort* port, EpollSet::Events& events) {
  std::array<NSInteger, 128> descriptors;
  NSInteger count = descriptors.size();
  [port getFds:descriptors.data() count:&count];
  for (NSInteger i = 0; i < count; ++i) events[static_cast<int>(descriptors[i])] |= EPOLLIN;
}

}  // namespace

RunLoopDescriptors& RunLoopDescriptors::Shared() {
  // Never destroyed: the replaced methods are called until the end of the process.
  static auto& descriptors = *new RunLoopDescriptors();
  return descriptors;
}

RunLoopDescriptors::RunLoopDescriptors() : mainRunLoop_([NSRunLoop currentRunLoop]), wakeDescriptor_(WakeDescriptor()) {
  originalAddEvent_ = TakeOver(@selector(addEvent:type:watcher:forMode:), AddEvent);
  originalRemoveEvent_ = TakeOver(@selector(removeEvent:type:forMode:all:), RemoveEvent);
}

void RunLoopDescriptors::AddEvent(id self, SEL command, void* data, RunLoopEventType type, id watcher, NSString* mode) {
  RunLoopDescriptors& descriptors = Shared();
  if (descriptors.IsObserved(self, mode)) descriptors.Add(data, type);
  descriptors.originalAddEvent_(self, command, data, type, watcher, mode);
}

void RunLoopDescriptors::RemoveEvent(id self, SEL command, void* data, RunLoopEventType type, NSString* mode,
                                     BOOL all) {
  RunLoopDescriptors& descriptors = Shared();
  const bool isObserved = descriptors.IsObserved(self, mode);
  descriptors.originalRemoveEvent_(self, command, data, type, mode, all);
  // Last, because it may give up the last reference to a port.
  if (isObserved) descriptors.Remove(data, type, all);
}

// Nested loops wait for the descriptors of other modes themselves. Watching them here, where they are not served, would
// keep the process awake.
bool RunLoopDescriptors::IsObserved(id runLoop, NSString* mode) const {
  if (runLoop != mainRunLoop_) return false;
  NSString* effectiveMode = mode != nil ? mode : [mainRunLoop_ currentMode];
  return effectiveMode == nil || [effectiveMode isEqualToString:NSDefaultRunLoopMode];
}

void RunLoopDescriptors::Add(void* data, RunLoopEventType type) {
  Source& source = sources_[{data, type}];
  if (type == ET_RPORT) source.port = Retain(static_cast<NSPort*>(data));
  ++source.count;
  changed_ = true;
}

void RunLoopDescriptors::Remove(void* data, RunLoopEventType type, bool all) {
  const auto position = sources_.find({data, type});
  if (position == sources_.end()) return;
  changed_ = true;
  if (all || --position->second.count <= 0) sources_.erase(position);
}

EpollSet::Events RunLoopDescriptors::Collect() {
  // An invalidated port leaves the run loop without calling the methods above.
  std::erase_if(sources_, [](const auto& entry) { return entry.second.port && ![entry.second.port isValid]; });

  EpollSet::Events events;
  if (wakeDescriptor_ >= 0) events[wakeDescriptor_] = EPOLLIN;
  for (const auto& [key, source] : sources_) {
    const auto& [data, type] = key;
    if (source.port) {
      AddDescriptorsOf(source.port, events);
    } else if (const std::uint32_t wanted = EpollEventsFor(type); wanted != 0) {
      events[static_cast<int>(reinterpret_cast<std::intptr_t>(data))] |= wanted;
    }
  }
  return events;
}

bool RunLoopDescriptors::TakeChange() {
  // Ports open and close descriptors on their own.
  const bool hasPorts =
      std::any_of(sources_.begin(), sources_.end(), [](const auto& entry) { return entry.second.port; });
  return std::exchange(changed_, false) || hasPorts;
}
