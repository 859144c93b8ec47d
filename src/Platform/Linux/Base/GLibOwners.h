#pragma once

#include <gio/gio.h>

#include <memory>

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
using GMainContextPtr = std::unique_ptr<GMainContext, GLibDeleter<g_main_context_unref>>;
using GSourcePtr = std::unique_ptr<GSource, GLibDeleter<g_source_unref>>;
using GStringListPtr = std::unique_ptr<char*, GLibDeleter<g_strfreev>>;
using GTextPtr = std::unique_ptr<char, GLibDeleter<g_free>>;
using GVariantPtr = std::unique_ptr<GVariant, GLibDeleter<g_variant_unref>>;

}  // namespace tessaro::platform
