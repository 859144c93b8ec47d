#pragma once

#import <Foundation/NSObject.h>
#include <objc/runtime.h>

// Puts `implementation` in the place of the class's method for `selector`, and keeps what stood there as a method named
// `aliasSelector`. A method that the class only inherits is overridden in the class; its superclass stays as it is.
// Gives the previous implementation, or nullptr, and changes nothing, where there is no such method.
//
// Done twice with the same alias, the alias still leads to what stood there first.
IMP TsReplaceMethod(Class patched, SEL selector, SEL aliasSelector, IMP implementation);

// The same with a type encoding of the caller's choice for what is added to the class.
IMP TsReplaceMethod(Class patched, SEL selector, SEL aliasSelector, IMP implementation, const char* encoding);
