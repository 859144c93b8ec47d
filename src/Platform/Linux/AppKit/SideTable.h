#pragma once

#import <Foundation/NSObject.h>
#import <objc/runtime.h>

#include <mutex>
#include <unordered_map>

namespace tessaro::platform {

// A property that a class of GNUstep lacks, for those of its instances that have been given one; it ends with them.
// `Owner` is the class; of each pair of Owner and Value there can be one table only. Thread-safe.
template <typename Owner, typename Value>
class SideTable {
 public:
  static SideTable& Shared() {
    static auto& table = *new SideTable();
    return table;
  }

  void Set(Owner* owner, Value value) {
    const std::lock_guard lock(mutex_);
    values_.insert_or_assign(owner, std::move(value));
  }

  [[nodiscard]] Value Get(Owner* owner, Value otherwise) const {
    const std::lock_guard lock(mutex_);
    const auto found = values_.find(owner);
    return found == values_.end() ? otherwise : found->second;
  }

 private:
  SideTable() {
    const Method method = class_getInstanceMethod([Owner class], @selector(dealloc));
    dealloc_ = method_setImplementation(method, reinterpret_cast<IMP>(Dealloc));
  }

  static void Dealloc(id owner, SEL selector) {
    Shared().Forget(owner);
    reinterpret_cast<void (*)(id, SEL)>(Shared().dealloc_)(owner, selector);
  }

  void Forget(id owner) {
    Value last{};  // its end may need the table
    const std::lock_guard lock(mutex_);
    const auto found = values_.find(owner);
    if (found == values_.end()) return;
    std::swap(last, found->second);
    values_.erase(found);
  }

  mutable std::mutex mutex_;
  std::unordered_map<id, Value> values_;
  IMP dealloc_ = nullptr;
};

}  // namespace tessaro::platform
