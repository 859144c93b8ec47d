#include "Utilities/TsEventEmitter.h"

void TsEventEmitter::Add(v8::Isolate* isolate, v8::Local<v8::Value> listener) {
  listeners_.emplace_back(isolate, listener);
}

void TsEventEmitter::Emit(const TsEngineEntry& entry, v8::Local<v8::Value> value) const {
  const std::size_t registered = listeners_.size();
  for (std::size_t i = 0; i < registered && i < listeners_.size(); ++i) {
    static_cast<void>(entry.Call(listeners_[i].Get(entry.isolate()), 1, &value).IsEmpty());
  }
}
