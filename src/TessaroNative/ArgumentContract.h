#pragma once

#include <v8.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

// A call from script: its arguments, and the place for its result.
using ScriptArguments = v8::FunctionCallbackInfo<v8::Value>;

// The vocabulary in which the function table states what a script function demands of its arguments.

// Types an argument may have; a condition may allow several.
enum class ArgumentType : std::uint8_t {
  String = 1 << 0,
  Object = 1 << 1,
  Int32 = 1 << 2,
  Boolean = 1 << 3,
  Function = 1 << 4,
  Null = 1 << 5,
  Undefined = 1 << 6,
};

class Condition {
 public:
  enum class Kind : std::uint8_t { None, CountIs, CountIsEither, CountIsAtLeast, ArgumentIs };

  constexpr Condition() = default;
  constexpr Condition(Kind kind, std::uint8_t number, std::uint8_t detail)
      : kind_(kind), number_(number), detail_(detail) {}

  [[nodiscard]] bool Holds(const ScriptArguments& args) const;

  // The condition as source text.
  [[nodiscard]] std::string Text() const;

 private:
  Kind kind_ = Kind::None;
  std::uint8_t number_ = 0;  // a count, or an argument's index
  std::uint8_t detail_ = 0;  // the other count allowed, or the types allowed
};

[[nodiscard]] constexpr Condition Exactly(std::uint8_t count) { return {Condition::Kind::CountIs, count, 0}; }
[[nodiscard]] constexpr Condition Either(std::uint8_t count, std::uint8_t otherCount) {
  return {Condition::Kind::CountIsEither, count, otherCount};
}
[[nodiscard]] constexpr Condition AtLeast(std::uint8_t count) { return {Condition::Kind::CountIsAtLeast, count, 0}; }

class Arg {
 public:
  constexpr explicit Arg(std::uint8_t index) : index_(index) {}

  [[nodiscard]] constexpr Condition IsString() const { return Is({ArgumentType::String}); }
  [[nodiscard]] constexpr Condition IsObject() const { return Is({ArgumentType::Object}); }
  [[nodiscard]] constexpr Condition IsInt32() const { return Is({ArgumentType::Int32}); }
  [[nodiscard]] constexpr Condition IsBoolean() const { return Is({ArgumentType::Boolean}); }
  [[nodiscard]] constexpr Condition IsFunction() const { return Is({ArgumentType::Function}); }
  [[nodiscard]] constexpr Condition IsStringOrNull() const { return Is({ArgumentType::String, ArgumentType::Null}); }
  [[nodiscard]] constexpr Condition IsBooleanOrNull() const { return Is({ArgumentType::Boolean, ArgumentType::Null}); }
  [[nodiscard]] constexpr Condition IsStringOrNullOrUndefined() const {
    return Is({ArgumentType::String, ArgumentType::Null, ArgumentType::Undefined});
  }

 private:
  [[nodiscard]] constexpr Condition Is(std::initializer_list<ArgumentType> types) const {
    std::uint8_t mask = 0;
    for (const ArgumentType type : types) mask |= static_cast<std::uint8_t>(type);
    return {Condition::Kind::ArgumentIs, index_, mask};
  }

  std::uint8_t index_;
};

// The conditions of one function, in the order in which they are tested.
class Contract {
 public:
  static constexpr std::size_t kMostConditions = 8;

  constexpr Contract(std::initializer_list<Condition> conditions) {
    for (const Condition& condition : conditions) conditions_[count_++] = condition;
  }

  // The first condition that `args` violates; nullptr when all hold.
  [[nodiscard]] const Condition* Violated(const ScriptArguments& args) const {
    for (const Condition& condition : *this) {
      if (!condition.Holds(args)) return &condition;
    }
    return nullptr;
  }

  [[nodiscard]] constexpr const Condition* begin() const { return conditions_.data(); }
  [[nodiscard]] constexpr const Condition* end() const { return conditions_.data() + count_; }

 private:
  std::array<Condition, kMostConditions> conditions_{};
  std::size_t count_ = 0;
};

// Ends the process with the assertion text: the caller in script has broken the function's contract, and nothing
// that this process does from here on could be trusted.
[[noreturn]] void AbortOnViolation(const char* file, int line, const char* function, const Condition& condition);
