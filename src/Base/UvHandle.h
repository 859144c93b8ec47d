#pragma once

#include <uv.h>

#include <memory>

struct UvCloser {
  template <typename Handle>
  void operator()(Handle* handle) const {
    // libuv goes on using a handle until its close callback.
    uv_close(reinterpret_cast<uv_handle_t*>(handle),
             [](uv_handle_t* closed) { delete reinterpret_cast<Handle*>(closed); });
  }
};

// Owner of a libuv handle. Main thread only.
template <typename Handle>
using UvHandle = std::unique_ptr<Handle, UvCloser>;

// An initialised handle on `loop`; null when `initialise`, the handle's uv_…_init function, fails. `owner` is what
// OwnerOf() returns in its callbacks. The handle does not keep the loop alive.
template <typename Handle, typename Initialise, typename... Arguments>
[[nodiscard]] UvHandle<Handle> MakeUvHandleOn(uv_loop_t* loop, void* owner, Initialise initialise,
                                              Arguments... arguments) {
  auto handle = std::make_unique<Handle>();
  if (initialise(loop, handle.get(), arguments...) != 0) return nullptr;
  handle->data = owner;
  uv_unref(reinterpret_cast<uv_handle_t*>(handle.get()));
  return UvHandle<Handle>(handle.release());
}

// The same on the default loop, where Node and Electron run the main environment.
template <typename Handle, typename Initialise, typename... Arguments>
[[nodiscard]] UvHandle<Handle> MakeUvHandle(void* owner, Initialise initialise, Arguments... arguments) {
  return MakeUvHandleOn<Handle>(uv_default_loop(), owner, initialise, arguments...);
}

template <typename Owner, typename Handle>
[[nodiscard]] Owner& OwnerOf(Handle* handle) {
  return *static_cast<Owner*>(handle->data);
}
