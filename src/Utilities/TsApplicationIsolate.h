#pragma once

namespace v8 {
class Context;
class Isolate;
template <class T>
class Local;
}  // namespace v8

// The script engine of the application. Set once, on the main thread, before anything else of the module can ask.
// From then until the environment ends, every call into script goes to this isolate, on the main thread.
void TsSetApplicationIsolate(v8::Isolate* isolate);

// nullptr before TsSetApplicationIsolate() and after the environment's end: script can't be reached then.
[[nodiscard]] v8::Isolate* GetApplicationIsolate();

// The context that was current when the isolate was set. Needs an open handle scope.
[[nodiscard]] v8::Local<v8::Context> GetApplicationContext();
