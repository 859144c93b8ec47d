#pragma once

#include <gio/gio.h>

#include "Base/Owned.h"

namespace tessaro::platform {

// Owners of one reference, or of the whole where GLib does not count.
template <typename T>
using GObjectPtr = Owned<T, g_object_unref>;
using GErrorPtr = Owned<GError, g_error_free>;
using GMainContextPtr = Owned<GMainContext, g_main_context_unref>;
using GSourcePtr = Owned<GSource, g_source_unref>;
using GStringListPtr = Owned<char*, g_strfreev>;
using GTextPtr = Owned<char, g_free>;
using GVariantPtr = Owned<GVariant, g_variant_unref>;

}  // namespace tessaro::platform
