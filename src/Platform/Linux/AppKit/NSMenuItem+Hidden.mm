#import "Platform/Linux/AppKit/NSMenuItem+Hidden.h"

#import <AppKit/NSMenu.h>

#include <unordered_set>

#include "Base/TsReplaceMethod.h"

namespace {

using Dealloc = void (*)(NSMenuItem*, SEL);

// This run time has no associated objects, and the class no room for another variable.
[[clang::no_destroy]] std::unordered_set<const void*> hiddenItems;
Dealloc previousDealloc = nullptr;

// A later item at the same address must not be hidden from its birth.
void DeallocAndForget(NSMenuItem* item, SEL selector) {
  hiddenItems.erase(item);
  previousDealloc(item, selector);
}

void ForgetItemsAtTheirEnd() {
  if (previousDealloc != nullptr) return;
  previousDealloc = reinterpret_cast<Dealloc>(TsReplaceMethod([NSMenuItem class], @selector(dealloc),
                                                              sel_registerName("ts_deallocMenuItem"),
                                                              reinterpret_cast<IMP>(DeallocAndForget)));
}

}  // namespace

@implementation NSMenuItem (Hidden)

- (BOOL)isHidden {
  return hiddenItems.contains(self);
}

- (void)setHidden:(BOOL)hidden {
  if (hidden == [self isHidden]) return;
  if (hidden) {
    ForgetItemsAtTheirEnd();
    hiddenItems.insert(self);
  } else {
    hiddenItems.erase(self);
  }
  [[self menu] itemChanged:self];
}

@end
