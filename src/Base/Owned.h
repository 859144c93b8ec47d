#pragma once

#include <memory>

// Gives an object back to the C library that it comes from.
template <auto release>
struct Releaser {
  template <typename T>
  void operator()(T* object) const noexcept {
    release(object);
  }
};

// Owner of such an object: Owned<FILE, fclose>.
template <typename T, auto release>
using Owned = std::unique_ptr<T, Releaser<release>>;
