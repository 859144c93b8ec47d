#include "native/ScriptValues.h"

#import <Foundation/Foundation.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

bool IsBoolean(NSNumber* number) {
  static Class const booleanClass = [[NSNumber numberWithBool:YES] class];
  return [number isKindOfClass:booleanClass];
}

napi_value ToScriptString(napi_env env, NSString* text) {
  std::vector<unichar> characters([text length]);
  [text getCharacters:characters.data() range:NSMakeRange(0, characters.size())];
  napi_value result = nullptr;
  napi_create_string_utf16(env, reinterpret_cast<const char16_t*>(characters.data()), characters.size(), &result);
  return result;
}

napi_value ToScriptNumber(napi_env env, NSNumber* number) {
  napi_value result = nullptr;
  if (IsBoolean(number)) {
    napi_get_boolean(env, [number boolValue], &result);
  } else {
    napi_create_double(env, [number doubleValue], &result);
  }
  return result;
}

napi_value ToScriptArray(napi_env env, NSArray* array) {
  napi_value result = nullptr;
  napi_create_array_with_length(env, [array count], &result);
  std::uint32_t index = 0;
  for (id element in array) napi_set_element(env, result, index++, ToScript(env, element));
  return result;
}

napi_value ToScriptObject(napi_env env, NSDictionary* dictionary) {
  napi_value result = nullptr;
  napi_create_object(env, &result);
  for (id key in dictionary) {
    napi_set_property(env, result, ToScript(env, [key description]), ToScript(env, [dictionary objectForKey:key]));
  }
  return result;
}

napi_value ToScriptBuffer(napi_env env, NSData* data) {
  napi_value result = nullptr;
  napi_create_buffer_copy(env, [data length], [data bytes], nullptr, &result);
  return result;
}

napi_value ScriptNull(napi_env env) {
  napi_value result = nullptr;
  napi_get_null(env, &result);
  return result;
}

NSString* FromScriptString(napi_env env, napi_value value) {
  std::size_t length = 0;
  napi_get_value_string_utf16(env, value, nullptr, 0, &length);
  std::vector<char16_t> characters(length + 1);
  napi_get_value_string_utf16(env, value, characters.data(), characters.size(), &length);
  return [NSString stringWithCharacters:reinterpret_cast<const unichar*>(characters.data()) length:length];
}

id OrNull(id object) { return object != nil ? object : [NSNull null]; }

NSArray* FromScriptArray(napi_env env, napi_value value) {
  std::uint32_t length = 0;
  napi_get_array_length(env, value, &length);
  NSMutableArray* result = [NSMutableArray arrayWithCapacity:length];
  for (std::uint32_t i = 0; i < length; ++i) {
    napi_value element = nullptr;
    napi_get_element(env, value, i, &element);
    [result addObject:OrNull(FromScript(env, element))];
  }
  return result;
}

NSDictionary* FromScriptObject(napi_env env, napi_value value) {
  napi_value names = nullptr;
  if (napi_get_property_names(env, value, &names) != napi_ok) return [NSDictionary dictionary];
  NSMutableDictionary* result = [NSMutableDictionary dictionary];
  for (NSString* name in FromScriptArray(env, names)) {
    napi_value property = nullptr;
    napi_get_property(env, value, ToScriptString(env, name), &property);
    [result setObject:OrNull(FromScript(env, property)) forKey:name];
  }
  return result;
}

NSData* FromScriptBuffer(napi_env env, napi_value value) {
  void* bytes = nullptr;
  std::size_t length = 0;
  napi_get_buffer_info(env, value, &bytes, &length);
  return [NSData dataWithBytes:bytes length:length];
}

id FromScriptObjectOfAnyKind(napi_env env, napi_value value) {
  bool isBuffer = false;
  bool isArray = false;
  napi_is_buffer(env, value, &isBuffer);
  if (isBuffer) return FromScriptBuffer(env, value);
  napi_is_array(env, value, &isArray);
  if (isArray) return FromScriptArray(env, value);
  return FromScriptObject(env, value);
}

}  // namespace

napi_value ToScript(napi_env env, id object) {
  if (object == nil || [object isKindOfClass:[NSNull class]]) return ScriptNull(env);
  if ([object isKindOfClass:[NSString class]]) return ToScriptString(env, object);
  if ([object isKindOfClass:[NSNumber class]]) return ToScriptNumber(env, object);
  if ([object isKindOfClass:[NSArray class]]) return ToScriptArray(env, object);
  if ([object isKindOfClass:[NSDictionary class]]) return ToScriptObject(env, object);
  if ([object isKindOfClass:[NSData class]]) return ToScriptBuffer(env, object);
  return ToScriptString(env, [object description]);
}

id FromScript(napi_env env, napi_value value) {
  napi_valuetype type = napi_undefined;
  napi_typeof(env, value, &type);
  switch (type) {
    case napi_string:
      return FromScriptString(env, value);
    case napi_boolean: {
      bool truth = false;
      napi_get_value_bool(env, value, &truth);
      return [NSNumber numberWithBool:truth];
    }
    case napi_number: {
      double number = 0;
      napi_get_value_double(env, value, &number);
      return [NSNumber numberWithDouble:number];
    }
    case napi_object:
      return FromScriptObjectOfAnyKind(env, value);
    default:
      return nil;
  }
}
