#pragma once

#import <Foundation/Foundation.h>

#include <cstdint>
#include <cstring>

#include "Platform/Linux/AppKit/CompactMemory.h"

// Objects of the compact classes do without Foundation's allocator, which costs more than all the rest of making a
// small object. They count their references themselves; a new object has one.
namespace tessaro::platform {

// Memory for one object of the class `Object`, with `extraBytes` behind its instance variables, all of which are zero.
template <typename Object>
Object* AllocateCompactObject(Class type, std::size_t extraBytes) {
  void* memory = AllocateCompactMemory(sizeof(Object) + extraBytes);
  if (memory == nullptr) [NSException raise:NSMallocException format:@"No memory for an object"];
  std::memset(memory, 0, sizeof(Object));
  std::memcpy(memory, &type, sizeof type);
  return static_cast<Object*>(memory);
}

inline void AddReference(std::uint32_t& extraReferences) { __atomic_fetch_add(&extraReferences, 1, __ATOMIC_RELAXED); }

// True when the reference that was given up was the last.
[[nodiscard]] inline bool RemoveReference(std::uint32_t& extraReferences) {
  // The only owner has nobody to race with.
  if (__atomic_load_n(&extraReferences, __ATOMIC_ACQUIRE) == 0) return true;
  return __atomic_fetch_sub(&extraReferences, 1, __ATOMIC_ACQ_REL) == 0;
}

}  // namespace tessaro::platform

// The reference counting of a compact class with an instance variable `_extraReferences`. `destroy` is called without
// a message when the last reference is given up: no class is derived from a compact one.
#define TS_COMPACT_REFERENCE_COUNTING(destroy)                                 \
  -(id)retain {                                                                \
    tessaro::platform::AddReference(_extraReferences);                         \
    return self;                                                               \
  }                                                                            \
  -(oneway void)release {                                                      \
    if (tessaro::platform::RemoveReference(_extraReferences)) (destroy)(self); \
  }                                                                            \
  -(NSUInteger)retainCount {                                                   \
    return __atomic_load_n(&_extraReferences, __ATOMIC_RELAXED) + 1;           \
  }                                                                            \
  -(NSZone*)zone {                                                             \
    return NSDefaultMallocZone();                                              \
  }
