#pragma once

#include <Availability.h>
#include <stddef.h>

typedef struct objc_class* Class;
struct objc_object {
  Class isa;
};
typedef struct objc_object* id;
typedef struct objc_selector* SEL;
typedef void (*IMP)(void);
#if defined(__arm64__)
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif
#define YES __objc_yes
#define NO __objc_no
#define nil nullptr
#define Nil nullptr

extern "C" {
SEL sel_registerName(const char* name);
const char* sel_getName(SEL selector);
BOOL sel_isEqual(SEL left, SEL right);
}
