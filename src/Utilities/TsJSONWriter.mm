#include "Utilities/TsJSONWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Base/TsUnicode.h"
#include "Platform/FoundationValues.h"
#include "Utilities/TsJSONError.h"
#include "Utilities/TsJSONText.h"

namespace platform = tessaro::platform;

namespace {

enum class Kind { String, Number, Boolean, Null, Array, Dictionary, Other };

// What an object is to JSON. A document has many objects of few classes, so each class is asked once.
class Kinds {
 public:
  Kind Of(id object) {
    const Class type = object_getClass(object);
    Entry& recent = recent_[(reinterpret_cast<std::uintptr_t>(type) >> 5) % recent_.size()];
    if (type == recent.type) return recent.kind;
    const auto [place, isNew] = kinds_.try_emplace(type, Kind::Other);
    if (isNew) place->second = Ask(object);
    recent = {type, place->second};
    return place->second;
  }

 private:
  static Kind Ask(id object) {
    static const Class boolean = object_getClass([NSNumber numberWithBool:YES]);
    if ([object isKindOfClass:[NSString class]]) return Kind::String;
    if (object_getClass(object) == boolean) return Kind::Boolean;
    if ([object isKindOfClass:[NSNumber class]]) return Kind::Number;
    if ([object isKindOfClass:[NSNull class]]) return Kind::Null;
    if ([object isKindOfClass:[NSArray class]]) return Kind::Array;
    if ([object isKindOfClass:[NSDictionary class]]) return Kind::Dictionary;
    return Kind::Other;
  }

  struct Entry {
    Class type = nil;
    Kind kind = Kind::Other;
  };

  std::array<Entry, 16> recent_;
  std::unordered_map<Class, Kind> kinds_;
};

// Memory for the text being written, kept from one document to the next unless it has become large.
template <typename Unit>
class ScratchText : public TsJSONText<Unit> {
 public:
  ScratchText() {
    this->text = std::exchange(Spare(), {});
    this->text.clear();
  }
  ~ScratchText() {
    if (this->text.capacity() <= kKeptCapacity) Spare() = std::move(this->text);
  }
  ScratchText(const ScratchText&) = delete;
  ScratchText& operator=(const ScratchText&) = delete;

 private:
  static constexpr std::size_t kKeptCapacity = 4 << 20;

  static std::basic_string<Unit>& Spare() {
    static thread_local std::basic_string<Unit> spare;
    return spare;
  }
};

// Writes in the width that the result will have: Latin-1 while that holds all characters, else UTF-16.
template <typename Unit>
class Writer {
 public:
  // False when a character does not fit in Latin-1, or error() has been set.
  bool Write(id object) { return Value(object, 1); }

  [[nodiscard]] NSError* error() const { return error_; }
  [[nodiscard]] const std::basic_string<Unit>& text() const { return scratch_.text; }

 private:
  bool Fail(NSString* reason, NSInteger code = kTsJSONError) {
    error_ = TsJSONError(reason, code);
    return false;
  }

  // One answer for what is nested too deeply, and for what is nested without end.
  bool FailTooDeep() { return Fail(@"it is nested too deeply", kTsJSONNestedTooDeeply); }

  void Put(char ascii) { scratch_.Put(ascii); }

  bool Value(id object, std::size_t level) {
    switch (kinds_.Of(object)) {
      case Kind::String:
        return String(object);
      case Kind::Number:
        return Number(object);
      case Kind::Boolean:
        scratch_.Put([object boolValue] ? "true" : "false");
        return true;
      case Kind::Null:
        scratch_.Put("null");
        return true;
      case Kind::Array:
        return level <= kTsMostJSONLevels ? Array(object, level) : FailTooDeep();
      case Kind::Dictionary:
        return level <= kTsMostJSONLevels ? Dictionary(object, level) : FailTooDeep();
      case Kind::Other:
        return Fail([NSString stringWithFormat:@"JSON has no form for objects of the class %@", [object class]]);
    }
    return false;
  }

  bool Array(NSArray* array, std::size_t level) {
    Put('[');
    bool isFirst = true;
    for (id element in array) {
      if (!std::exchange(isFirst, false)) Put(',');
      if (!Value(element, level + 1)) return false;
    }
    Put(']');
    return true;
  }

  bool Dictionary(NSDictionary* dictionary, std::size_t level) {
    Put('{');
    bool isFirst = true;
    for (id key in dictionary) {
      if (kinds_.Of(key) != Kind::String) return Fail(@"it has a key that is not a string");
      if (!std::exchange(isFirst, false)) Put(',');
      if (!String(key)) return false;
      Put(':');
      if (!Value([dictionary objectForKey:key], level + 1)) return false;
    }
    Put('}');
    return true;
  }

  bool Number(NSNumber* number) {
    switch ([number objCType][0]) {
      case 'd':
      case 'f':
        return Double([number doubleValue]);
      case 'Q':
      case 'L':
        return Digits([number unsignedLongLongValue]);
      default:
        return Digits([number longLongValue]);
    }
  }

  bool Double(double value) {
    return std::isfinite(value) ? Digits(value) : Fail(@"it contains a number that is infinite or not a number");
  }

  template <typename Value>
  bool Digits(Value value) {
    scratch_.PutNumber(value);
    return true;
  }

  bool String(NSString* string) {
    const auto contents = platform::StringContents(string);
    if (contents.latin1 != nullptr) return Quoted(contents.latin1, contents.length);
    if (contents.utf16 != nullptr) return Quoted(contents.utf16, contents.length);
    characters_.resize([string length]);
    [string getCharacters:reinterpret_cast<unichar*>(characters_.data()) range:NSMakeRange(0, characters_.size())];
    ReplaceLoneSurrogates(characters_.data(), characters_.size());
    return Quoted(characters_.data(), characters_.size());
  }

  template <typename Character>
  bool Quoted(const Character* characters, std::size_t length) {
    if constexpr (sizeof(Unit) < sizeof(Character)) {
      if (!FitsLatin1(characters, length)) return false;
    }
    scratch_.PutQuoted(characters, length);
    return true;
  }

  ScratchText<Unit> scratch_;
  NSError* error_ = nil;
  Kinds kinds_;
  std::vector<char16_t> characters_;
};

template <typename Unit>
NSString* MakeString(const std::basic_string<Unit>& text) {
  if constexpr (sizeof(Unit) == 1) {
    auto made = platform::NewLatin1String(text.size());
    std::copy(text.begin(), text.end(), made.characters);
    return made.string.Autoreleased();
  } else {
    auto made = platform::NewUtf16String(text.size());
    std::copy(text.begin(), text.end(), made.characters);
    return made.string.Autoreleased();
  }
}

NSString* WriteAsNarrowAsPossible(id object, NSError*& error) {
  Writer<std::uint8_t> narrow;
  if (narrow.Write(object)) return MakeString(narrow.text());
  error = narrow.error();
  if (error != nil) return nil;
  Writer<char16_t> wide;
  if (wide.Write(object)) return MakeString(wide.text());
  error = wide.error();
  return nil;
}

bool IsContainer(id object) {
  return [object isKindOfClass:[NSArray class]] || [object isKindOfClass:[NSDictionary class]];
}

}  // namespace

NSString* TsWriteJSON(id object, NSError** error) {
  @try {
    if (IsContainer(object)) return WriteAsNarrowAsPossible(object, *error);
    *error = TsJSONError(@"it is neither an array nor a dictionary");
  } @catch (NSException* exception) {
    *error = TsJSONError([exception reason]);
  }
  return nil;
}
