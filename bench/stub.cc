// The least that a Node-API add-on can do for a string in and out, and for a constant.

#include <node_api.h>

#include <array>
#include <string>

namespace {

constexpr std::size_t kShortText = 256;

napi_value FirstArgument(napi_env env, napi_callback_info info) {
  std::size_t count = 1;
  napi_value argument = nullptr;
  napi_get_cb_info(env, info, &count, &argument, nullptr, nullptr);
  return argument;
}

napi_value Echo(napi_env env, napi_callback_info info) {
  const napi_value argument = FirstArgument(env, info);
  std::array<char, kShortText> text;
  std::size_t length = 0;
  napi_value result = nullptr;
  napi_get_value_string_utf8(env, argument, text.data(), text.size(), &length);
  // A text that fills the buffer may have been cut off.
  if (length + 4 < text.size()) {
    napi_create_string_utf8(env, text.data(), length, &result);
    return result;
  }
  napi_get_value_string_utf8(env, argument, nullptr, 0, &length);
  std::string whole(length, '\0');
  napi_get_value_string_utf8(env, argument, whole.data(), length + 1, &length);
  napi_create_string_utf8(env, whole.data(), length, &result);
  return result;
}

napi_value Get(napi_env env, napi_callback_info) {
  napi_value result = nullptr;
  napi_get_boolean(env, true, &result);
  return result;
}

}  // namespace

NAPI_MODULE_INIT() {
  const std::array<napi_property_descriptor, 2> properties = {{
      {"echo", nullptr, Echo, nullptr, nullptr, nullptr, napi_default, nullptr},
      {"get", nullptr, Get, nullptr, nullptr, nullptr, napi_default, nullptr},
  }};
  napi_define_properties(env, exports, properties.size(), properties.data());
  return exports;
}
