#pragma once

#include <v8.h>

#include <vector>

#include "Utilities/TsEngineEntry.h"

// The script functions that listen to one event, in the order of registration.
class TsEventEmitter {
 public:
  [[nodiscard]] bool IsEmpty() const { return listeners_.empty(); }

  // Any value may be added, also several times; one that is not a function fails inside the engine when it is called.
  void Add(v8::Isolate* isolate, v8::Local<v8::Value> listener) { listeners_.emplace_back(isolate, listener); }

  // Calls every listener in the order of registration, with `value` and the receiver null, but none that is added
  // during the call. An exception of one is an uncaught exception; the others are called all the same.
  void Emit(const TsEngineEntry& entry, v8::Local<v8::Value> value) const {
    const std::size_t registered = listeners_.size();
    for (std::size_t i = 0; i < registered && i < listeners_.size(); ++i) {
      static_cast<void>(entry.Call(listeners_[i].Get(entry.isolate()), 1, &value).IsEmpty());
    }
  }

  void Clear() { listeners_.clear(); }

 private:
  std::vector<v8::Global<v8::Value>> listeners_;
};
