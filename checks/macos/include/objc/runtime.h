#pragma once

#include <objc/objc.h>

@class Protocol;
typedef struct objc_method* Method;
typedef struct objc_ivar* Ivar;
typedef struct objc_property* objc_property_t;
using objc_AssociationPolicy = unsigned long;

enum : objc_AssociationPolicy {
  OBJC_ASSOCIATION_ASSIGN = 0,
  OBJC_ASSOCIATION_RETAIN_NONATOMIC = 1,
  OBJC_ASSOCIATION_COPY_NONATOMIC = 3,
  OBJC_ASSOCIATION_RETAIN = 01401,
};

extern "C" {
Class objc_getClass(const char* name);
Class object_getClass(id object);
const char* class_getName(Class cls);
const char* object_getClassName(id object);
Class class_getSuperclass(Class cls);
Method class_getInstanceMethod(Class cls, SEL name);
Method class_getClassMethod(Class cls, SEL name);
IMP class_getMethodImplementation(Class cls, SEL name);
BOOL class_respondsToSelector(Class cls, SEL name);
BOOL class_addMethod(Class cls, SEL name, IMP implementation, const char* types);
IMP class_replaceMethod(Class cls, SEL name, IMP implementation, const char* types);
BOOL class_isMetaClass(Class cls);
IMP method_getImplementation(Method method);
IMP method_setImplementation(Method method, IMP implementation);
const char* method_getTypeEncoding(Method method);
void method_exchangeImplementations(Method left, Method right);
Class objc_allocateClassPair(Class superclass, const char* name, size_t extraBytes);
void objc_registerClassPair(Class cls);
void objc_setAssociatedObject(id object, const void* key, id value, objc_AssociationPolicy policy);
id objc_getAssociatedObject(id object, const void* key);
}
