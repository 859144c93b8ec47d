#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>

namespace tessaro::platform {

template <auto release>
struct GLibDeleter {
  template <typename T>
  void operator()(T* object) const noexcept {
    release(object);
  }
};

// Owners of one reference, or of the whole where GLib does not count.
template <typename T>
using GObjectPtr = std::unique_ptr<T, GLibDeleter<g_object_unref>>;
using GErrorPtr = std::unique_ptr<GError, GLibDeleter<g_error_free>>;
using GKeyFilePtr = std::unique_ptr<GKeyFile, GLibDeleter<g_key_file_unref>>;
using GMainContextPtr = std::unique_ptr<GMainContext, GLibDeleter<g_main_context_unref>>;
using GSourcePtr = std::unique_ptr<GSource, GLibDeleter<g_source_unref>>;
using GStringListPtr = std::unique_ptr<char*, GLibDeleter<g_strfreev>>;
using GTextPtr = std::unique_ptr<char, GLibDeleter<g_free>>;
using GVariantPtr = std::unique_ptr<GVariant, GLibDeleter<g_variant_unref>>;

// The contents of the key file.
[[nodiscard]] inline std::string TextOfKeyFile(GKeyFile* keys) {
  gsize length = 0;
  const GTextPtr text(g_key_file_to_data(keys, &length, nullptr));
  return {text.get(), length};
}

}  // namespace tessaro::platform
