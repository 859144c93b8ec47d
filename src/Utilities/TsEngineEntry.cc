#include "Utilities/TsEngineEntry.h"

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

// Node keeps its context entered while the event loop waits: only the stack tells whether script is running.
bool IsScriptRunning(v8::Isolate* isolate) {
  return v8::StackTrace::CurrentStackTrace(isolate, 1, v8::StackTrace::kScriptId)->GetFrameCount() > 0;
}

}  // namespace

void TsSetApplicationIsolate(v8::Isolate* isolate) {
  const v8::HandleScope scope(isolate);
  Engine().isolate = isolate;
  Engine().context.Reset(isolate, isolate->GetCurrentContext());
}

v8::Isolate* GetApplicationIsolate() { return Engine().isolate; }

v8::Local<v8::Context> GetApplicationContext() { return Engine().context.Get(Engine().isolate); }

TsEngineEntry::TsEngineEntry(v8::Isolate* isolate)
    : isolate_(isolate),
      handles_(isolate),
      nested_(IsScriptRunning(isolate)),
      context_(GetApplicationContext()),
      entered_(context_) {
  if (!nested_) callback_.emplace(isolate, v8::Object::New(isolate), node::async_context{0, 0});
}

v8::MaybeLocal<v8::Value> TsEngineEntry::Call(v8::Local<v8::Value> function, int count,
                                              v8::Local<v8::Value> arguments[]) const {
  const v8::Local<v8::Value> receiver = v8::Null(isolate_);
  if (function->IsFunction()) return function.As<v8::Function>()->Call(context_, receiver, count, arguments);
  // Not a function: let the engine throw its own error.
  v8::Local<v8::Object> object;
  if (!function->ToObject(context_).ToLocal(&object)) return {};
  return object->CallAsFunction(context_, receiver, count, arguments);
}
