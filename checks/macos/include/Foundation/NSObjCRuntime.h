#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <objc/runtime.h>
#include <stdarg.h>

#define NS_ENUM(type, name) \
  enum name : type name;    \
  enum name : type
#define NS_OPTIONS(type, name) \
  type name;                   \
  enum : type
#define FOUNDATION_EXPORT extern "C"
#define NS_FORMAT_FUNCTION(text, first) __attribute__((format(__NSString__, text, first)))
#define NS_REQUIRES_NIL_TERMINATION __attribute__((sentinel))
#define NS_RETURNS_INNER_POINTER __attribute__((objc_returns_inner_pointer))
#define NS_NOESCAPE __attribute__((noescape))

using NSInteger = long;
using NSUInteger = unsigned long;
using NSTimeInterval = double;
using unichar = unsigned short;
using NSComparisonResult = NSInteger;
enum : NSComparisonResult { NSOrderedAscending = -1, NSOrderedSame, NSOrderedDescending };
static const NSInteger NSNotFound = 0x7fffffffffffffff;

@class NSString, NSArray, NSDictionary, NSSet, NSData, NSDate, NSError, NSURL, NSNumber, NSInvocation;
@class NSMethodSignature, NSEnumerator, NSCoder;

FOUNDATION_EXPORT Class NSClassFromString(NSString* name);
FOUNDATION_EXPORT NSString* NSStringFromClass(Class cls);
FOUNDATION_EXPORT SEL NSSelectorFromString(NSString* name);
FOUNDATION_EXPORT NSString* NSStringFromSelector(SEL selector);
FOUNDATION_EXPORT void NSLog(NSString* format, ...) NS_FORMAT_FUNCTION(1, 2);

struct NSRange {
  NSUInteger location;
  NSUInteger length;
};
inline NSUInteger NSMaxRange(NSRange range) { return range.location + range.length; }
inline NSRange NSMakeRange(NSUInteger location, NSUInteger length) { return {location, length}; }

struct NSFastEnumerationState {
  unsigned long state;
  id* itemsPtr;
  unsigned long* mutationsPtr;
  unsigned long extra[5];
};
@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state objects:(id*)buffer count:(NSUInteger)length;
@end
