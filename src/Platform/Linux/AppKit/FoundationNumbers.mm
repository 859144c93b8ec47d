#import <objc/runtime.h>

#include "Platform/FoundationValues.h"

namespace tessaro::platform {

namespace {

// Foundation's own class for numbers of one C type, and where its objects keep their value. Its factories take eight
// times as long as allocating the object does.
template <typename Value>
class NumberClass {
 public:
  explicit NumberClass(NSString* name) : type_(NSClassFromString(name)) {
    const Ivar value = class_getInstanceVariable(type_, "value");
    isKnown_ = value != nullptr && ivar_getTypeEncoding(value)[0] == @encode(Value)[0];
    if (isKnown_) offset_ = ivar_getOffset(value);
  }

  // nil when the class is not what it used to be.
  [[nodiscard]] Ref<NSNumber> New(Value value) const {
    if (!isKnown_) return nullptr;
    NSNumber* number = NSAllocateObject(type_, 0, nullptr);
    *reinterpret_cast<Value*>(reinterpret_cast<char*>(number) + offset_) = value;
    return Adopt(number);
  }

 private:
  Class type_;
  bool isKnown_ = false;
  std::ptrdiff_t offset_ = 0;
};

}  // namespace

Ref<NSNumber> NewNumber(std::int64_t value) {
  static const NumberClass<long long> type(@"NSLongLongNumber");
  if (auto number = type.New(value)) return number;
  return Adopt([[NSNumber alloc] initWithLongLong:value]);
}

Ref<NSNumber> NewNumber(std::uint64_t value) { return Adopt([[NSNumber alloc] initWithUnsignedLongLong:value]); }

Ref<NSNumber> NewNumber(double value) {
  static const NumberClass<double> type(@"NSDoubleNumber");
  if (auto number = type.New(value)) return number;
  return Adopt([[NSNumber alloc] initWithDouble:value]);
}

}  // namespace tessaro::platform
