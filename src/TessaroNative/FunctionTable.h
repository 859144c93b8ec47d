#pragma once

#include <node.h>

#include <array>
#include <cstddef>
#include <initializer_list>
#include <span>

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

// A condition that the arguments of a call must keep, and its source text.
struct Condition {
  bool (*holds)(const ScriptArguments& args);
  const char* text;
};

#define CONDITION(test)                                               \
  Condition {                                                         \
    [](const ScriptArguments& args) -> bool { return (test); }, #test \
  }

// A short list that can be written into a row.
template <typename Item, std::size_t most>
class RowList {
 public:
  constexpr RowList() = default;
  constexpr RowList(std::initializer_list<Item> items) {
    for (const Item& item : items) items_[count_++] = item;
  }

  [[nodiscard]] constexpr const Item* begin() const { return items_.data(); }
  [[nodiscard]] constexpr const Item* end() const { return items_.data() + count_; }

 private:
  std::array<Item, most> items_{};
  std::size_t count_ = 0;
};

// The slots that a function fills with its arguments, in their order.
using Slots = RowList<TsSlot, 3>;

// The conditions of a function, in the order in which they are tested.
using Contract = RowList<Condition, 8>;

// The first condition that `args` violates; nullptr when all hold.
[[nodiscard]] const Condition* Violated(const Contract& contract, const ScriptArguments& args);

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

// The way into every handler: tests the contract, provides what the handler needs, and lets no Objective-C exception
// out into the engine.
void Dispatch(const char* tableFile, const ScriptFunction& function, const ScriptArguments& args);

// The whole script surface, in registration order.
[[nodiscard]] std::span<const ScriptFunction> FunctionTable();

// Attaches every function of the table to `exports`.
void RegisterFunctions(v8::Local<v8::Object> exports);
