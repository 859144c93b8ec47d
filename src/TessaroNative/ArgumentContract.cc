#include "TessaroNative/ArgumentContract.h"

#include <cstdio>
#include <cstdlib>

#include "Base/TsLogging.h"

namespace {

struct TypeTest {
  ArgumentType type;
  const char* name;
  bool (*passes)(v8::Local<v8::Value>);
};

constexpr TypeTest kTypeTests[] = {
    {ArgumentType::String, "IsString", [](v8::Local<v8::Value> value) { return value->IsString(); }},
    {ArgumentType::Object, "IsObject", [](v8::Local<v8::Value> value) { return value->IsObject(); }},
    {ArgumentType::Int32, "IsInt32", [](v8::Local<v8::Value> value) { return value->IsInt32(); }},
    {ArgumentType::Boolean, "IsBoolean", [](v8::Local<v8::Value> value) { return value->IsBoolean(); }},
    {ArgumentType::Function, "IsFunction", [](v8::Local<v8::Value> value) { return value->IsFunction(); }},
    {ArgumentType::Null, "IsNull", [](v8::Local<v8::Value> value) { return value->IsNull(); }},
    {ArgumentType::Undefined, "IsUndefined", [](v8::Local<v8::Value> value) { return value->IsUndefined(); }},
};

constexpr bool Allows(std::uint8_t types, ArgumentType type) { return (types & static_cast<std::uint8_t>(type)) != 0; }

bool IsOneOf(v8::Local<v8::Value> value, std::uint8_t types) {
  for (const TypeTest& test : kTypeTests) {
    if (Allows(types, test.type) && test.passes(value)) return true;
  }
  return false;
}

std::string TypeText(std::uint8_t index, std::uint8_t types) {
  std::string text;
  for (const TypeTest& test : kTypeTests) {
    if (!Allows(types, test.type)) continue;
    if (!text.empty()) text += " || ";
    text += "args[" + std::to_string(index) + "]->" + test.name + "()";
  }
  return text;
}

}  // namespace

bool Condition::Holds(const ScriptArguments& args) const {
  switch (kind_) {
    case Kind::None:
      return true;
    case Kind::CountIs:
      return args.Length() == number_;
    case Kind::CountIsEither:
      return args.Length() == number_ || args.Length() == detail_;
    case Kind::CountIsAtLeast:
      return args.Length() >= number_;
    case Kind::ArgumentIs:
      return IsOneOf(args[number_], detail_);
  }
  return false;
}

std::string Condition::Text() const {
  const std::string length = "args.Length()";
  switch (kind_) {
    case Kind::None:
      return "true";
    case Kind::CountIs:
      return length + " == " + std::to_string(number_);
    case Kind::CountIsEither:
      return length + " == " + std::to_string(number_) + " || " + length + " == " + std::to_string(detail_);
    case Kind::CountIsAtLeast:
      return length + " >= " + std::to_string(number_);
    case Kind::ArgumentIs:
      return TypeText(number_, detail_);
  }
  return {};
}

void AbortOnViolation(const char* file, int line, const char* function, const Condition& condition) {
  TsLogFacility::Shared().Flush();
  std::fprintf(stderr, "TessaroNative: %s:%d: %s: Assertion `%s' failed.\n", file, line, function,
               condition.Text().c_str());
  std::fflush(stderr);
  std::abort();
}
