#pragma once

#import <Foundation/NSObject.h>

#include <mutex>
#include <unordered_map>
#include <utility>

#include "Base/Lifetime.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"

namespace tessaro::platform {

// Stores a `Value` for instances of `Owner`, a class of GNUstep, until they are deallocated: this run time has no
// associated objects. One table for each pair of types. Thread-safe.
template <typename Owner, typename Value>
class SideTable {
 public:
  static SideTable& Shared() {
    static Forever<SideTable> table;
    return *table;
  }

  [[nodiscard]] Value Get(Owner* owner, Value otherwise = {}) const {
    const std::lock_guard lock(mutex_);
    const auto found = values_.find(owner);
    return found == values_.end() ? otherwise : found->second;
  }

  void Set(Owner* owner, Value value) {
    const std::lock_guard lock(mutex_);
    std::swap(values_[owner], value);
  }

  template <typename Function>
  void Change(Owner* owner, Function change) {
    Value value = Get(owner);
    change(value);
    Set(owner, std::move(value));
  }

  SideTable() { dealloc_.With([Owner class], "dealloc", Dealloc); }

 private:
  static void Dealloc(Owner* owner, SEL selector) {
    Shared().Forget(owner);
    Shared().dealloc_(owner, selector);
  }

  void Forget(Owner* owner) {
    Value last{};  // destroyed after the lock is released: its destructor may use the table
    const std::lock_guard lock(mutex_);
    const auto found = values_.find(owner);
    if (found == values_.end()) return;
    std::swap(last, found->second);
    values_.erase(found);
  }

  mutable std::mutex mutex_;
  std::unordered_map<Owner*, Value> values_;
  ReplacedMethod<void (*)(Owner*, SEL)> dealloc_;
};

}  // namespace tessaro::platform
