#pragma once

#include <uv.h>

#include <memory>

// Owner of one libuv handle. libuv takes the handle's memory back itself, on a later turn of the loop.
struct LoopHandleCloser {
  template <typename T>
  void operator()(T* handle) const {
    uv_close(reinterpret_cast<uv_handle_t*>(handle), [](uv_handle_t* closed) { delete reinterpret_cast<T*>(closed); });
  }
};

template <typename T>
using LoopHandle = std::unique_ptr<T, LoopHandleCloser>;

// `initialise` is the handle's uv_…_init function; `owner` is what OwnerOf() gives in its callbacks. The handle doesn't
// keep the process from ending unless uv_ref() says so. Null when it can't be made.
template <typename T, typename Initialise, typename... Arguments>
[[nodiscard]] LoopHandle<T> MakeLoopHandle(uv_loop_t* loop, void* owner, Initialise initialise,
                                           Arguments... arguments) {
  auto handle = std::make_unique<T>();
  if (initialise(loop, handle.get(), arguments...) != 0) return nullptr;
  handle->data = owner;
  uv_unref(reinterpret_cast<uv_handle_t*>(handle.get()));
  return LoopHandle<T>(handle.release());
}

template <typename Owner, typename T>
[[nodiscard]] Owner& OwnerOf(T* handle) {
  return *static_cast<Owner*>(handle->data);
}
