#include <node.h>

#include "TessaroNative/StartUp.h"

namespace {

void InitInContext(v8::Local<v8::Object> exports, v8::Local<v8::Value> module, v8::Local<v8::Context>, void*) {
  Init(exports, module);
}

// Registered with a context-aware initialiser, because the host refuses to load any other kind a second time.
node::node_module module = {
    .nm_version = NODE_MODULE_VERSION,
    .nm_flags = 0,
    .nm_dso_handle = nullptr,
    .nm_filename = __FILE__,
    .nm_register_func = nullptr,
    .nm_context_register_func = InitInContext,
    .nm_modname = "TessaroNative",
    .nm_priv = nullptr,
    .nm_link = nullptr,
};

const struct Registration {
  Registration() { node_module_register(&module); }
} registration;

}  // namespace

// When the module is loaded again, its image is still in memory and no constructor runs: the host then looks up this
// symbol. NODE_MODULE_INIT would register it once more, as a function of four parameters.
extern "C" NODE_MODULE_EXPORT void NODE_MODULE_INITIALIZER(v8::Local<v8::Object> exports, v8::Local<v8::Value> self,
                                                           v8::Local<v8::Context> context) {
  InitInContext(exports, self, context, nullptr);
}
