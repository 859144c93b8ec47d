#pragma once

#import <Foundation/NSObject.h>

#include <utility>

// Owner of one reference to an Objective-C object: retains on copy, releases at the end of its life.
// Make one with Retain() from an object with another owner, or with Adopt() from one returned at +1 (alloc, new, copy).
template <typename T>
class Ref {
 public:
  Ref() = default;
  Ref(std::nullptr_t) {}
  Ref(const Ref& other) : object_([other.object_ retain]) {}
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nil)) {}
  template <typename Derived>
  Ref(Ref<Derived> other) noexcept : object_(other.Leak()) {}
  ~Ref() {
    // Most have been moved from, and a message to nil is a message.
    if (object_ != nil) [object_ release];
  }

  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  // Good for as long as this owner lives; the compiler refuses to keep what it gets from a temporary one.
  [[nodiscard]] T* get() const [[clang::lifetimebound]] { return object_; }
  operator T*() const [[clang::lifetimebound]] { return object_; }
  explicit operator bool() const { return object_ != nil; }

  // Gives the reference up: the caller must release it, or hand it on as a +1 result.
  [[nodiscard]] T* Leak() { return std::exchange(object_, nil); }

  // The object, released with the current autorelease pool: what a Cocoa method returns.
  [[nodiscard]] T* Autoreleased() { return [Leak() autorelease]; }

 private:
  template <typename U>
  friend Ref<U> Adopt(U* object);
  template <typename U>
  friend Ref<U> Retain(U* object);

  explicit Ref(T* owned) : object_(owned) {}

  T* object_ = nil;
};

template <typename T>
[[nodiscard]] Ref<T> Adopt(T* object) {
  return Ref<T>(object);
}

template <typename T>
[[nodiscard]] Ref<T> Retain(T* object) {
  return Ref<T>([object retain]);
}

// An immutable copy, which later changes of the original don't reach.
template <typename T>
[[nodiscard]] Ref<T> Copy(T* object) {
  return Adopt<T>([object copy]);
}

// The object as a T; nil when it is of another class.
template <typename T>
[[nodiscard]] T* As(id object) {
  return [object isKindOfClass:[T class]] ? static_cast<T*>(object) : nil;
}

// The accessors of a property whose value is in a Ref: TS_COPIED(NSString, name, Name) for `_name`.

#define TS_COPIED(type, name, Name) \
  -(type*)name {                    \
    return _##name;                 \
  }                                 \
  -(void)set##Name : (type*)value { \
    _##name = Copy(value);          \
  }

#define TS_RETAINED(type, name, Name) \
  -(type*)name {                      \
    return _##name;                   \
  }                                   \
  -(void)set##Name : (type*)value {   \
    _##name = Retain(value);          \
  }
