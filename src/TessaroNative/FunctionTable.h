#pragma once

#include <node.h>

#include <array>
#include <initializer_list>
#include <span>

#include "TessaroNative/ArgumentContract.h"
#include "TessaroNative/handlers/Handlers.h"
#include "Utilities/TsSlot.h"

// The result of a function that failed, or that needs something which the machine lacks.
enum class Nothing { Undefined, Null, False, Zero, EmptyText, EmptyArray };

// The surroundings that a handler needs.
enum class Needs {
  Bridge,        // nothing: it only moves values and makes no autoreleased object
  Foundation,    // an autorelease pool
  WindowServer,  // that, and a running window server
};

// The slots that a function fills with its arguments, in their order.
class Slots {
 public:
  static constexpr std::size_t kMost = 3;

  constexpr Slots() = default;
  constexpr Slots(std::initializer_list<TsSlot> slots) {
    for (const TsSlot slot : slots) slots_[count_++] = slot;
  }

  [[nodiscard]] constexpr const TsSlot* begin() const { return slots_.data(); }
  [[nodiscard]] constexpr const TsSlot* end() const { return slots_.data() + count_; }

 private:
  std::array<TsSlot, kMost> slots_{};
  std::size_t count_ = 0;
};

// A row: everything about a script function except its work.
struct ScriptFunction {
  const char* name;
  const char* handlerName;  // differs from `name` for some
  ScriptHandler* handler = nullptr;
  Slots slots;  // for a function that has no handler
  Nothing nothing;
  Needs needs;
  Contract contract;
  int line;  // where the row stands

  constexpr ScriptFunction(const char* script, const char* text, ScriptHandler* calls, Nothing result, Needs around,
                           Contract tested, int row = __builtin_LINE())
      : name(script), handlerName(text), handler(calls), nothing(result), needs(around), contract(tested), line(row) {}
  constexpr ScriptFunction(const char* script, const char* text, Slots fills, Nothing result, Needs around,
                           Contract tested, int row = __builtin_LINE())
      : name(script), handlerName(text), slots(fills), nothing(result), needs(around), contract(tested), line(row) {}
};

// The whole script surface, in registration order.
[[nodiscard]] std::span<const ScriptFunction> FunctionTable();

// Attaches every function of the table to `exports`.
void RegisterFunctions(v8::Local<v8::Object> exports);
