#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tessaro::platform {

// Owner of one reference to an object of Core Foundation, or of a framework whose objects are counted like its own:
// what a function named "Create" or "Copy" returns.
template <typename T>
class CFRef {
 public:
  CFRef() = default;
  explicit CFRef(T owned) : object_(owned) {}
  CFRef(CFRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  CFRef& operator=(CFRef&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~CFRef() {
    if (object_ != nullptr) CFRelease(object_);
  }

  [[nodiscard]] T get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

  // The place for a function to store a new reference in. Only for an empty owner.
  [[nodiscard]] T* Receive() { return &object_; }

 private:
  T object_ = nullptr;
};

// Empty when the text isn't UTF-8.
[[nodiscard]] CFRef<CFStringRef> NewCFString(std::string_view utf8);

// Nothing for anything but a string.
[[nodiscard]] std::optional<std::string> TextOf(CFTypeRef object);

[[nodiscard]] CFRef<CFURLRef> NewFileURL(std::string_view path);

}  // namespace tessaro::platform
