#pragma once

#include <uv.h>

#include <memory>

namespace tessaro::platform {

template <typename Handle>
struct UvCloser {
  void operator()(Handle* handle) const {
    // libuv goes on using a handle until it says that it is closed.
    uv_close(reinterpret_cast<uv_handle_t*>(handle),
             [](uv_handle_t* closed) { delete reinterpret_cast<Handle*>(closed); });
  }
};

// Owner of a libuv handle. Main thread only.
template <typename Handle>
using UvHandle = std::unique_ptr<Handle, UvCloser<Handle>>;

// An initialised handle on the default loop, which Node and Electron both run the main environment on. `data` is what
// its callbacks find; the handle does not keep the loop alive. `initialise` is uv_…_init with what it wants besides.
template <typename Handle, typename Initialise, typename... Arguments>
[[nodiscard]] UvHandle<Handle> MakeUvHandle(void* data, Initialise initialise, Arguments... arguments) {
  auto handle = std::make_unique<Handle>();
  initialise(uv_default_loop(), handle.get(), arguments...);
  handle->data = data;
  uv_unref(reinterpret_cast<uv_handle_t*>(handle.get()));
  return UvHandle<Handle>(handle.release());
}

// For the callbacks: the owner that was given as `data`.
template <typename Owner, typename Handle>
[[nodiscard]] Owner& OwnerOf(Handle* handle) {
  return *static_cast<Owner*>(handle->data);
}

}  // namespace tessaro::platform
