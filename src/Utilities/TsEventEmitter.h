#pragma once

#include <v8.h>

#include <vector>

#include "Utilities/TsEngineEntry.h"

// An ordered list of script functions that hear of one event.
class TsEventEmitter {
 public:
  [[nodiscard]] bool IsEmpty() const { return listeners_.empty(); }

  // Any value may be added, also several times; one that is not a function fails inside the engine when it is called.
  void Add(v8::Isolate* isolate, v8::Local<v8::Value> listener);

  // Calls every listener in the order of registration, with `value` and the receiver null. Those that are added
  // meanwhile are not called. What one of them throws is an uncaught exception, and keeps it from no other.
  void Emit(const TsEngineEntry& entry, v8::Local<v8::Value> value) const;

  void Clear() { listeners_.clear(); }

 private:
  std::vector<v8::Global<v8::Value>> listeners_;
};
