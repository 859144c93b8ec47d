#import <AppKit/AppKit.h>

#include <string_view>
#include <vector>

#include "Base/Ref.h"
#include "Probe.h"

// Messages to objects: sendMessage(target, selector, …arguments). A target is the name of a class, or an object that a
// probe has given. Rectangles, points and sizes are lists of their numbers, classes their names.

namespace {

bool IsOneOf(const char* type, std::string_view types) { return types.find(*type) != types.npos; }

template <typename T>
void SetArgument(NSInvocation* invocation, int index, T value) {
  [invocation setArgument:&value atIndex:index];
}

void SetNumbers(NSInvocation* invocation, int index, NSArray* values) {
  std::vector<double> numbers;
  for (NSNumber* number in values) numbers.push_back([number doubleValue]);
  [invocation setArgument:numbers.data() atIndex:index];
}

void SetArgument(NSInvocation* invocation, int index, const char* type, id value) {
  if (IsOneOf(type, "{")) return SetNumbers(invocation, index, value);
  if (IsOneOf(type, ":")) return SetArgument(invocation, index, NSSelectorFromString(value));
  if (IsOneOf(type, "#")) return SetArgument(invocation, index, NSClassFromString(value));
  if (IsOneOf(type, "S")) return SetArgument(invocation, index, [value unsignedShortValue]);
  if (IsOneOf(type, "@")) return SetArgument(invocation, index, value);
  if (IsOneOf(type, "cC")) return SetArgument(invocation, index, [value boolValue]);
  if (IsOneOf(type, "d")) return SetArgument(invocation, index, [value doubleValue]);
  if (IsOneOf(type, "qQlL")) return SetArgument(invocation, index, [value longLongValue]);
  if (IsOneOf(type, "iI")) return SetArgument(invocation, index, [value intValue]);
  SetArgument<void*>(invocation, index, nullptr);
}

template <typename T>
T ResultOf(NSInvocation* invocation) {
  T result;
  [invocation getReturnValue:&result];
  return result;
}

NSArray* NumbersOf(NSInvocation* invocation) {
  std::vector<double> numbers([[invocation methodSignature] methodReturnLength] / sizeof(double));
  [invocation getReturnValue:numbers.data()];
  return List(numbers, [](double number) { return @(number); });
}

// Nil when the method gives nothing.
id ResultOf(NSInvocation* invocation) {
  const char* type = [[invocation methodSignature] methodReturnType];
  if (IsOneOf(type, "@")) return OrNull(ResultOf<id>(invocation));
  if (IsOneOf(type, "{")) return NumbersOf(invocation);
  if (IsOneOf(type, ":")) return NSStringFromSelector(ResultOf<SEL>(invocation));
  if (IsOneOf(type, "d")) return @(ResultOf<double>(invocation));
  if (IsOneOf(type, "BcC")) return Truth(ResultOf<BOOL>(invocation) != NO);
  if (IsOneOf(type, "qQlL")) return @(ResultOf<long long>(invocation));
  if (IsOneOf(type, "i")) return @(ResultOf<int>(invocation));
  if (IsOneOf(type, "I")) return @(ResultOf<unsigned int>(invocation));
  return nil;
}

// The error of the last message: what the message has put where an argument points to.
Ref<NSObject>& LastError() {
  static Ref<NSObject> error;
  return error;
}

id lastError() { return LastError().get(); }

void sendMessage(ProbeArguments args) {
  id target = ObjectFromScript(args[0]);
  if (args[0]->IsString()) target = NSClassFromString(target);
  if (target == nil) return;
  const SEL selector = NSSelectorFromString(convertToNSString(args[1]));
  NSMethodSignature* signature = [target methodSignatureForSelector:selector];
  NSInvocation* invocation = [NSInvocation invocationWithMethodSignature:signature];
  [invocation setTarget:target];
  [invocation setSelector:selector];
  id error = nil;
  for (int i = 2; i < args.Length(); ++i) {
    const char* type = [signature getArgumentTypeAtIndex:i];
    if (std::string_view(type).starts_with("^@")) {
      SetArgument(invocation, i, &error);
    } else {
      SetArgument(invocation, i, type, ObjectFromScript(args[i]));
    }
  }
  @try {
    [invocation invoke];
    LastError() = Retain(static_cast<NSObject*>(error));
    ReturnObject(args, ResultOf(invocation));
  } @catch (NSException* exception) {
    ReturnObject(args, @{@"raised" : [exception name], @"reason" : [exception reason]});
  }
}

NSString* NameOf(NSColor* color) {
  if ([color alphaComponent] == 0) return @"clear";
  const auto byte = [](CGFloat component) { return static_cast<int>(component * 255 + 0.5); };
  return [NSString stringWithFormat:@"%02X%02X%02X", byte([color redComponent]), byte([color greenComponent]),
                                    byte([color blueComponent])];
}

// The colours of a picture's pixels, in hexadecimal or "clear", with the number of the pixels.
id colorsOf(NSImage* image) {
  const NSRect bounds = {NSZeroPoint, [image size]};
  const auto canvas = Adopt([[NSImage alloc] initWithSize:bounds.size]);
  [canvas lockFocus];
  [image drawAtPoint:NSZeroPoint fromRect:NSZeroRect operation:NSCompositeSourceOver fraction:1];
  const auto pixels = Adopt([[NSBitmapImageRep alloc] initWithFocusedViewRect:bounds]);
  [canvas unlockFocus];
  NSCountedSet* colors = [NSCountedSet set];
  for (NSInteger i = 0; i < [pixels pixelsHigh] * [pixels pixelsWide]; ++i) {
    [colors addObject:NameOf([pixels colorAtX:i % [pixels pixelsWide] y:i / [pixels pixelsWide]])];
  }
  NSMutableDictionary* counts = [NSMutableDictionary dictionary];
  for (NSString* name in colors) [counts setObject:@([colors countForObject:name]) forKey:name];
  return counts;
}

PROBES("", sendMessage, lastError, colorsOf);

}  // namespace
