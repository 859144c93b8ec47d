#include "native/ScriptContext.h"

namespace {

napi_value NewObject(napi_env env) {
  napi_value object = nullptr;
  napi_create_object(env, &object);
  return object;
}

}  // namespace

ScriptContext::ScriptContext(napi_env env) : env_(env) {
  napi_value name = nullptr;
  napi_create_string_utf8(env, "TessaroHost", NAPI_AUTO_LENGTH, &name);
  napi_async_init(env, NewObject(env), name, &async_);
}

ScriptContext::~ScriptContext() { napi_async_destroy(env_, async_); }

void ScriptContext::Call(napi_value function, std::size_t count, const napi_value* arguments) const {
  const napi_status status = napi_make_callback(env_, async_, NewObject(env_), function, count, arguments, nullptr);
  napi_value exception = nullptr;
  if (status != napi_pending_exception || napi_get_and_clear_last_exception(env_, &exception) != napi_ok) return;
  napi_fatal_exception(env_, exception);
}

ScriptTurn::ScriptTurn(const ScriptContext& script) : env_(script.env_) {
  napi_open_handle_scope(env_, &handles_);
  napi_open_callback_scope(env_, nullptr, script.async_, &callback_);
}

ScriptTurn::~ScriptTurn() {
  if (callback_ != nullptr) napi_close_callback_scope(env_, callback_);
  if (handles_ != nullptr) napi_close_handle_scope(env_, handles_);
}
