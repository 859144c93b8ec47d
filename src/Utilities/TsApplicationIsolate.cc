#include "Utilities/TsApplicationIsolate.h"

#include <v8.h>

namespace {

struct ScriptEngine {
  v8::Isolate* isolate = nullptr;
  v8::Global<v8::Context> context;
};

ScriptEngine& Engine() {
  static ScriptEngine engine;
  return engine;
}

}  // namespace

void TsSetApplicationIsolate(v8::Isolate* isolate) {
  const v8::HandleScope scope(isolate);
  Engine().isolate = isolate;
  Engine().context.Reset(isolate, isolate->GetCurrentContext());
}

v8::Isolate* GetApplicationIsolate() { return Engine().isolate; }

v8::Local<v8::Context> GetApplicationContext() { return Engine().context.Get(Engine().isolate); }

void TsForgetApplicationIsolate() {
  Engine().context.Reset();
  Engine().isolate = nullptr;
}
