#pragma once

#include <node_api.h>

#include <cstddef>

// Calls from native code into script, for one environment. Main thread only.
class ScriptContext {
 public:
  explicit ScriptContext(napi_env env);
  ~ScriptContext();
  ScriptContext(const ScriptContext&) = delete;
  ScriptContext& operator=(const ScriptContext&) = delete;

  [[nodiscard]] napi_env env() const { return env_; }

  // Calls `function`. Promises and ticks that it caused settle before return, or at the end of the surrounding
  // ScriptTurn or script. An exception becomes an uncaught exception of the process.
  void Call(napi_value function, std::size_t count, const napi_value* arguments) const;

 private:
  friend class ScriptTurn;

  napi_env env_;
  napi_async_context async_ = nullptr;
};

// A stretch of native code, run from the event loop, in which anything may call into script: at its end promises and
// ticks settle, as they do after every callback of Node's own.
class ScriptTurn {
 public:
  explicit ScriptTurn(const ScriptContext& script);
  ~ScriptTurn();
  ScriptTurn(const ScriptTurn&) = delete;
  ScriptTurn& operator=(const ScriptTurn&) = delete;

 private:
  napi_env env_;
  napi_handle_scope handles_ = nullptr;
  napi_callback_scope callback_ = nullptr;
};
