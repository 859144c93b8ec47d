#include "native/ScriptEvents.h"

#include <array>

#include "native/ScriptValues.h"

void ScriptEvents::SetHandler(napi_value function) {
  Clear();
  napi_create_reference(script_.env(), function, 1, &handler_);
}

void ScriptEvents::Clear() {
  if (handler_ == nullptr) return;
  napi_delete_reference(script_.env(), handler_);
  handler_ = nullptr;
}

void ScriptEvents::Emit(NSString* name, id payload) const {
  napi_handle_scope handles = nullptr;
  if (handler_ == nullptr || napi_open_handle_scope(script_.env(), &handles) != napi_ok) return;
  napi_value function = nullptr;
  napi_get_reference_value(script_.env(), handler_, &function);
  const std::array arguments = {ToScript(script_.env(), name), ToScript(script_.env(), payload)};
  script_.Call(function, arguments.size(), arguments.data());
  napi_close_handle_scope(script_.env(), handles);
}
