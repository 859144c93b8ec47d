#include "Utilities/TsApplicationIsolate.h"

#include <v8.h>

#include "Base/Lifetime.h"

namespace {

struct ScriptEngine {
  v8::Isolate* isolate = nullptr;
  v8::Global<v8::Context> context;

  // Made before everything that calls into the engine, and so closed after it.
  static constexpr EndStage kEnd = EndStage::Script;
  void Close() {
    context.Reset();
    isolate = nullptr;
  }
};

ScriptEngine& Engine() {
  static Forever<ScriptEngine> engine;
  return *engine;
}

}  // namespace

void TsSetApplicationIsolate(v8::Isolate* isolate) {
  const v8::HandleScope scope(isolate);
  Engine().isolate = isolate;
  Engine().context.Reset(isolate, isolate->GetCurrentContext());
}

v8::Isolate* GetApplicationIsolate() { return Engine().isolate; }

v8::Local<v8::Context> GetApplicationContext() { return Engine().context.Get(Engine().isolate); }
