#include "Base/TsReplaceMethod.h"

IMP TsReplaceMethod(Class patched, SEL selector, SEL aliasSelector, IMP implementation) {
  Method existing = class_getInstanceMethod(patched, selector);
  if (existing == nullptr) return nullptr;
  return TsReplaceMethod(patched, selector, aliasSelector, implementation, method_getTypeEncoding(existing));
}

IMP TsReplaceMethod(Class patched, SEL selector, SEL aliasSelector, IMP implementation, const char* encoding) {
  Method existing = class_getInstanceMethod(patched, selector);
  if (existing == nullptr) return nullptr;
  IMP previous = method_getImplementation(existing);
  class_addMethod(patched, aliasSelector, previous, encoding);
  // class_replaceMethod() would not do: for an inherited method GCC's run time patches the superclass.
  if (!class_addMethod(patched, selector, implementation, encoding)) {
    method_setImplementation(existing, implementation);
  }
  return previous;
}
