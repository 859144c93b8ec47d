#pragma once

#import <Foundation/NSString.h>
#include <node.h>

#include "Utilities/TsScriptValues.h"

// Makes `string` the function's result; nil leaves that undefined.
inline void ReturnString(const v8::FunctionCallbackInfo<v8::Value>& args, NSString* string) {
  v8::Local<v8::String> result;
  if (ToScriptString(args.GetIsolate(), string).ToLocal(&result)) args.GetReturnValue().Set(result);
}
