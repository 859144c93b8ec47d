#pragma once

#include <node.h>
#include <node_buffer.h>

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

// The test add-on: the module itself, and on `exports.probe` what tests need to reach behind its script surface.

using ProbeArguments = const v8::FunctionCallbackInfo<v8::Value>&;

// Adds an object named `name` to `parent`.
[[nodiscard]] v8::Local<v8::Object> AddProbeObject(v8::Local<v8::Object> parent, const char* name);

[[nodiscard]] inline v8::Local<v8::String> ScriptText(std::string_view text) {
  return v8::String::NewFromUtf8(v8::Isolate::GetCurrent(), text.data(), v8::NewStringType::kNormal,
                                 static_cast<int>(text.size()))
      .ToLocalChecked();
}

[[nodiscard]] inline std::string StdText(v8::Local<v8::Value> value) {
  const v8::String::Utf8Value utf8(v8::Isolate::GetCurrent(), value);
  return {*utf8, static_cast<std::size_t>(utf8.length())};
}

[[nodiscard]] inline double Number(v8::Local<v8::Value> value) {
  return value->NumberValue(v8::Isolate::GetCurrent()->GetCurrentContext()).FromMaybe(0);
}

// The probes of a file: functions of the object `object` in `exports.probe`, or of `exports.probe` itself where that
// has no name. `names` are those of the functions, with commas between them.
class ProbeGroup {
 public:
  using Attach = void (*)(v8::Local<v8::Object>);

  ProbeGroup(const char* object, std::string_view names, std::vector<v8::FunctionCallback> functions,
             Attach attachMore = nullptr);

  static void AttachAll(v8::Local<v8::Object> probe);

 private:
  const char* object_;
  std::string_view names_;
  std::vector<v8::FunctionCallback> functions_;
  Attach attachMore_;
};

// A function of script's, which the event loop calls with a text.
class ScriptCallback {
 public:
  explicit ScriptCallback(v8::Local<v8::Value> function)
      : function_(std::make_shared<v8::Global<v8::Function>>(v8::Isolate::GetCurrent(), function.As<v8::Function>())) {}

  void operator()(std::string_view text) const;

 private:
  std::shared_ptr<v8::Global<v8::Function>> function_;
};

#ifdef __OBJC__
#import <Foundation/Foundation.h>

#include "Utilities/TsScriptValues.h"

[[nodiscard]] inline NSNumber* Truth(bool value) { return [NSNumber numberWithBool:value]; }

[[nodiscard]] inline id OrNull(id value) { return value != nil ? value : [NSNull null]; }

// The elements as Foundation's objects.
template <typename Range, typename Convert>
[[nodiscard]] id List(const Range& range, Convert convert) {
  NSMutableArray* list = [NSMutableArray array];
  for (const auto& element : range) [list addObject:convert(element)];
  return list;
}

// Values of JSON, between script and a probe. Nil is undefined; other objects have a handle in script.
void ReturnObject(ProbeArguments args, id value);
[[nodiscard]] id ObjectFromScript(v8::Local<v8::Value> value);

template <typename T>
[[nodiscard]] T FromScript(v8::Local<v8::Value> value) {
  if constexpr (std::is_same_v<T, bool>) {
    return value->IsTrue();
  } else if constexpr (std::is_integral_v<T>) {
    return static_cast<T>(value->IntegerValue(v8::Isolate::GetCurrent()->GetCurrentContext()).FromMaybe(0));
  } else if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(Number(value));
  } else if constexpr (std::is_same_v<T, std::string>) {
    return StdText(value);
  } else if constexpr (std::is_same_v<T, std::string_view>) {
    return {node::Buffer::Data(value), node::Buffer::Length(value)};
  } else if constexpr (std::is_same_v<T, NSString*>) {
    return convertToNSString(value);
  } else if constexpr (std::is_same_v<T, ScriptCallback>) {
    return ScriptCallback(value);
  } else {
    return static_cast<T>(ObjectFromScript(value));
  }
}

template <typename T>
void ReturnValue(ProbeArguments args, const T& value) {
  if constexpr (std::is_same_v<T, bool>) {
    args.GetReturnValue().Set(value);
  } else if constexpr (std::is_arithmetic_v<T>) {
    args.GetReturnValue().Set(static_cast<double>(value));
  } else if constexpr (std::is_convertible_v<T, id>) {
    ReturnObject(args, value);
  } else {
    args.GetReturnValue().Set(ScriptText(value));
  }
}

// Calls a function with script's arguments, converted to the types of its parameters, and returns its result to script.
// A function of ProbeArguments reads and returns by itself.
template <typename Function>
struct Probed;

template <>
struct Probed<void (*)(ProbeArguments)> {
  template <auto probe>
  static void Enter(ProbeArguments args) {
    @autoreleasepool {
      probe(args);
    }
  }
};

template <typename Result, typename... Parameters>
struct Probed<Result (*)(Parameters...)> {
  template <auto probe>
  static void Enter(ProbeArguments args) {
    @autoreleasepool {
      Call<probe>(args, std::index_sequence_for<Parameters...>());
    }
  }

  template <auto probe, std::size_t... index>
  static void Call([[maybe_unused]] ProbeArguments args, std::index_sequence<index...>) {
    if constexpr (std::is_void_v<Result>) {
      probe(FromScript<Parameters>(args[index])...);
    } else {
      v8::TryCatch thrown(args.GetIsolate());
      const Result result = probe(FromScript<Parameters>(args[index])...);
      // Newer engines drop what a callback has thrown when a value is made for script.
      if (thrown.HasCaught()) {
        thrown.ReThrow();
        return;
      }
      ReturnValue(args, result);
    }
  }
};

template <auto... functions>
[[nodiscard]] std::vector<v8::FunctionCallback> Entries() {
  return {Probed<decltype(functions)>::template Enter<functions>...};
}

#define PROBES(object, ...) const ProbeGroup kProbes(object, #__VA_ARGS__, Entries<__VA_ARGS__>())
#else
// In plain C++ only functions of ProbeArguments are probes.
#define PROBES(object, ...) const ProbeGroup kProbes(object, #__VA_ARGS__, {__VA_ARGS__})
#endif
