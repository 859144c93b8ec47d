#pragma once

#include <node.h>

#include <optional>

// The script engine of the application. Set once, on the main thread, before anything else of the module can ask.
// From then until the environment ends, every call into script goes to this isolate, on the main thread.
void TsSetApplicationIsolate(v8::Isolate* isolate);

// nullptr before TsSetApplicationIsolate() and after the environment's end: script can't be reached then.
[[nodiscard]] v8::Isolate* GetApplicationIsolate();

// The context that was current when the isolate was set. Needs an open handle scope.
[[nodiscard]] v8::Local<v8::Context> GetApplicationContext();

// Makes the engine ready for a call from native code, for as long as this object lives. A call from the event loop,
// where no script is running, needs Node's callback scope: it drains the micro-task and next-tick queues and reports
// what was thrown. A call made while script runs must have none, or the exception would not reach that script.
class TsEngineEntry {
 public:
  explicit TsEngineEntry(v8::Isolate* isolate);
  TsEngineEntry(const TsEngineEntry&) = delete;
  TsEngineEntry& operator=(const TsEngineEntry&) = delete;

  [[nodiscard]] v8::Isolate* isolate() const { return isolate_; }
  [[nodiscard]] v8::Local<v8::Context> context() const { return context_; }

  // Calls `function`, which may be any value, with the receiver null. Empty when it threw.
  v8::MaybeLocal<v8::Value> Call(v8::Local<v8::Value> function, int count, v8::Local<v8::Value> arguments[]) const;

 private:
  v8::Isolate* isolate_;
  v8::HandleScope handles_;
  bool nested_;
  v8::Local<v8::Context> context_;
  v8::Context::Scope entered_;
  std::optional<node::CallbackScope> callback_;
};
