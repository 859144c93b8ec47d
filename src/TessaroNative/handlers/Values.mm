#include "TessaroNative/handlers/Values.h"

#include <node_buffer.h>

#include <cstring>

#include "Base/TsLog.h"
#include "Utilities/TsJSON.h"
#include "Window/WindowUtils.h"

void ReturnString(const ScriptArguments& args, NSString* string) {
  v8::Local<v8::String> result;
  if (ToScriptString(args.GetIsolate(), string).ToLocal(&result)) args.GetReturnValue().Set(result);
}

void ReturnStringOrNull(const ScriptArguments& args, NSString* string) {
  args.GetReturnValue().SetNull();
  ReturnString(args, string);
}

std::int32_t ToInteger(v8::Local<v8::Value> value) {
  return value->IsInt32() ? value.As<v8::Int32>()->Value()
                          : value->Int32Value(v8::Isolate::GetCurrent()->GetCurrentContext()).FromMaybe(0);
}

NSWindow* ToWindow(v8::Local<v8::Value> value) {
  const void* reference = nullptr;
  if (!node::Buffer::HasInstance(value) || node::Buffer::Length(value) != sizeof reference) return nil;
  std::memcpy(&reference, node::Buffer::Data(value), sizeof reference);
  return TsLivingWindow(reference);
}

id TsParsedArgument(v8::Local<v8::Value> value, Class type, NSString* name) {
  NSString* text = convertToNSString(value);
  NSError* error = nil;
  id container = TsConvertFromJSONString(text, &error);
  if ([container isKindOfClass:type]) return container;
  NSString* kind = type == [NSArray class] ? @"it is no array" : @"it is no object";
  TsLogError(@"Couldn't parse %@ %@ because of %@", name, text, error != nil ? static_cast<id>(error) : kind);
  return nil;
}

id TsParsedArgument(v8::Local<v8::Value> value, Class type, NSString* unreadable, NSString* unsuitable) {
  NSString* text = convertToNSString(value);
  NSError* error = nil;
  id container = TsConvertFromJSONString(text, &error);
  if ([container isKindOfClass:type]) return container;
  if (container == nil) {
    TsLogError(@"%@ %@ (%@)", unreadable, text, error);
  } else {
    TsLogError(@"%@ (%@)", unsuitable, container);
  }
  return nil;
}
