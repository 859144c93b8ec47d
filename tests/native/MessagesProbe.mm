#import <AppKit/AppKit.h>
#import <objc/runtime.h>

#include <chrono>
#include <pugixml.hpp>
#include <vector>

#include "Base/Ref.h"
#import "Keychain/TsKeyChain.h"
#include "Probe.h"

// Messages to objects: sendMessage(target, selector, …arguments). A target is the name of a class, or what another
// message gave. Rectangles, points and sizes are lists of their numbers.

namespace {

using v8::Local;
using v8::Value;

Local<v8::Context> Context() { return v8::Isolate::GetCurrent()->GetCurrentContext(); }

void SetProperty(Local<v8::Object> object, const char* name, Local<Value> value) {
  object->Set(Context(), ScriptText(name), value).Check();
}

// Objects that script has seen, each once, by their handles.
std::vector<Ref<NSObject>>& Known() {
  static std::vector<Ref<NSObject>> known;
  return known;
}

std::size_t HandleOf(NSObject* object) {
  auto& known = Known();
  for (std::size_t i = 0; i < known.size(); ++i) {
    if (known[i].get() == object) return i;
  }
  known.push_back(Retain(object));
  return known.size() - 1;
}

Local<Value> ToScript(id object);

Local<Value> ArrayToScript(id objects) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const auto array = v8::Array::New(isolate);
  std::uint32_t index = 0;
  for (id each in objects) array->Set(Context(), index++, ToScript(each)).Check();
  return array;
}

Local<Value> DictionaryToScript(NSDictionary* dictionary) {
  const auto object = v8::Object::New(v8::Isolate::GetCurrent());
  for (NSString* key in dictionary) SetProperty(object, [key UTF8String], ToScript([dictionary objectForKey:key]));
  return object;
}

Local<Value> HandleToScript(NSObject* object) {
  const auto handle = v8::Object::New(v8::Isolate::GetCurrent());
  SetProperty(handle, "handle",
              v8::Integer::New(v8::Isolate::GetCurrent(), static_cast<std::int32_t>(HandleOf(object))));
  SetProperty(handle, "class", ScriptText(object_getClassName(object)));
  return handle;
}

Local<Value> NumbersToScript(const std::vector<double>& numbers) {
  const auto array = v8::Array::New(v8::Isolate::GetCurrent());
  for (std::uint32_t i = 0; i < numbers.size(); ++i) {
    array->Set(Context(), i, v8::Number::New(v8::Isolate::GetCurrent(), numbers[i])).Check();
  }
  return array;
}

std::vector<double> NumbersFromScript(Local<Value> value) {
  std::vector<double> numbers;
  for (NSNumber* number in static_cast<NSArray*>(ObjectFromScript(value))) numbers.push_back([number doubleValue]);
  return numbers;
}

// Dates as seconds since 2001, data as Base64.
Local<Value> ToScript(id object) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  if (object == nil || object == [NSNull null]) return v8::Null(isolate);
  if ([object isKindOfClass:[NSString class]]) return ToScriptString(isolate, object).ToLocalChecked();
  if ([object isKindOfClass:[[NSNumber numberWithBool:YES] class]])
    return v8::Boolean::New(isolate, [object boolValue]);
  if ([object isKindOfClass:[NSNumber class]]) return v8::Number::New(isolate, [object doubleValue]);
  if ([object isKindOfClass:[NSDate class]]) return v8::Number::New(isolate, [object timeIntervalSinceReferenceDate]);
  if ([object isKindOfClass:[NSData class]]) return ToScript([object base64EncodedStringWithOptions:0]);
  if ([object isKindOfClass:[NSDictionary class]]) return DictionaryToScript(object);
  if ([object isKindOfClass:[NSArray class]] || [object isKindOfClass:[NSSet class]] ||
      [object isKindOfClass:[NSOrderedSet class]])
    return ArrayToScript(object);
  return HandleToScript(object);
}

id FromScript(Local<Value> value) {
  if (value->IsNullOrUndefined()) return nil;
  if (value->IsBoolean()) return [NSNumber numberWithBool:value->IsTrue()];
  if (value->IsInt32()) return [NSNumber numberWithInt:value.As<v8::Int32>()->Value()];
  if (value->IsNumber()) return [NSNumber numberWithDouble:value.As<v8::Number>()->Value()];
  if (!value->IsObject()) return convertToNSString(value);
  const auto handle = value.As<v8::Object>()->Get(Context(), ScriptText("handle")).ToLocalChecked();
  if (!handle->IsNumber()) return ObjectFromScript(value);
  return Known()[handle.As<v8::Uint32>()->Value()];
}

template <typename T>
void SetArgument(NSInvocation* invocation, int index, T value) {
  [invocation setArgument:&value atIndex:index];
}

void SetArgument(NSInvocation* invocation, int index, const char* type, Local<Value> value) {
  switch (*type) {
    case '@':
      return SetArgument(invocation, index, FromScript(value));
    case '{':
      return [invocation setArgument:NumbersFromScript(value).data() atIndex:index];
    case ':':
      return SetArgument(invocation, index, NSSelectorFromString(convertToNSString(value)));
    case 'c':
    case 'C':
      return SetArgument(invocation, index, static_cast<BOOL>(value->IsTrue()));
    case 'S':
      return SetArgument(invocation, index, static_cast<std::uint16_t>(Number(value)));
    case 'd':
      return SetArgument(invocation, index, Number(value));
    case 'q':
    case 'Q':
    case 'l':
    case 'L':
      return SetArgument(invocation, index, static_cast<std::int64_t>(Number(value)));
    case 'i':
    case 'I':
      return SetArgument(invocation, index, static_cast<std::int32_t>(Number(value)));
    default:
      return SetArgument<void*>(invocation, index, nullptr);  // an NSError**
  }
}

template <typename T>
T ResultOf(NSInvocation* invocation) {
  T result;
  [invocation getReturnValue:&result];
  return result;
}

Local<Value> ResultToScript(NSInvocation* invocation) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  switch (*[[invocation methodSignature] methodReturnType]) {
    case '@':
      return ToScript(ResultOf<id>(invocation));
    case '{': {
      std::vector<double> numbers([[invocation methodSignature] methodReturnLength] / sizeof(double));
      [invocation getReturnValue:numbers.data()];
      return NumbersToScript(numbers);
    }
    case ':':
      return ToScript(NSStringFromSelector(ResultOf<SEL>(invocation)));
    case 'B':
    case 'c':
    case 'C':
      return v8::Boolean::New(isolate, ResultOf<BOOL>(invocation) != NO);
    case 'd':
      return v8::Number::New(isolate, ResultOf<double>(invocation));
    case 'q':
    case 'Q':
    case 'l':
    case 'L':
      return v8::Number::New(isolate, static_cast<double>(ResultOf<std::int64_t>(invocation)));
    case 'i':
      return v8::Integer::New(isolate, ResultOf<std::int32_t>(invocation));
    case 'I':
      return v8::Integer::NewFromUnsigned(isolate, ResultOf<std::uint32_t>(invocation));
    default:
      return v8::Undefined(isolate);
  }
}

Local<Value> Raised(NSException* exception) {
  const auto raised = v8::Object::New(v8::Isolate::GetCurrent());
  SetProperty(raised, "raised", ToScript([exception name]));
  SetProperty(raised, "reason", ToScript([exception reason]));
  return raised;
}

id Target(Local<Value> value) {
  return value->IsString() ? NSClassFromString(convertToNSString(value)) : FromScript(value);
}

void sendMessage(ProbeArguments args) {
  id target = Target(args[0]);
  if (target == nil) return;
  const SEL selector = NSSelectorFromString(convertToNSString(args[1]));
  NSMethodSignature* signature = [target methodSignatureForSelector:selector];
  NSInvocation* invocation = [NSInvocation invocationWithMethodSignature:signature];
  [invocation setTarget:target];
  [invocation setSelector:selector];
  for (int i = 2; i < args.Length(); ++i) SetArgument(invocation, i, [signature getArgumentTypeAtIndex:i], args[i]);
  @try {
    [invocation invoke];
    args.GetReturnValue().Set(ResultToScript(invocation));
  } @catch (NSException* exception) {
    args.GetReturnValue().Set(Raised(exception));
  }
}

NSString* NameOf(NSColor* color) {
  if ([color alphaComponent] == 0) return @"clear";
  const auto byte = [](CGFloat component) { return static_cast<int>(component * 255 + 0.5); };
  return [NSString stringWithFormat:@"%02X%02X%02X", byte([color redComponent]), byte([color greenComponent]),
                                    byte([color blueComponent])];
}

// The colours of a picture's or a view's pixels, in hexadecimal or "clear", with the number of the pixels.
void colorsOf(ProbeArguments args) {
  id drawn = Target(args[0]);
  NSView* view = As<NSView>(drawn);
  const NSRect bounds = {NSZeroPoint, view != nil ? [view bounds].size : [drawn size]};
  const auto canvas = Adopt([[NSImage alloc] initWithSize:bounds.size]);
  [canvas lockFocus];
  [view drawRect:bounds];
  if (view == nil) [drawn drawAtPoint:NSZeroPoint fromRect:NSZeroRect operation:NSCompositeSourceOver fraction:1];
  const auto pixels = Adopt([[NSBitmapImageRep alloc] initWithFocusedViewRect:bounds]);
  [canvas unlockFocus];
  NSCountedSet* colors = [NSCountedSet set];
  for (NSInteger i = 0; i < [pixels pixelsHigh] * [pixels pixelsWide]; ++i) {
    [colors addObject:NameOf([pixels colorAtX:i % [pixels pixelsWide] y:i / [pixels pixelsWide]])];
  }
  NSMutableDictionary* counts = [NSMutableDictionary dictionary];
  for (NSString* name in colors) [counts setObject:@([colors countForObject:name]) forKey:name];
  ReturnObject(args, counts);
}

id NoPassword(id, SEL, NSString*) { return nil; }

// From now on the keychain takes no time, and has nothing.
void silenceKeychain() {
  const Method method = class_getInstanceMethod([TsKeychain class], @selector(passwordForAccount:));
  method_setImplementation(method, reinterpret_cast<IMP>(NoPassword));
}

// The milliseconds that parsing a file takes, from the disk to the document; a negative number when it is no XML.
double timeParse(std::string file) {
  const auto start = std::chrono::steady_clock::now();
  pugi::xml_document document;
  if (!document.load_file(file.c_str())) return -1;
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

void AttachMessagesProbe(Local<v8::Object> exports) {
  PROBE(sendMessage);
  PROBE(colorsOf);
  PROBE(silenceKeychain);
  PROBE(timeParse);
}
