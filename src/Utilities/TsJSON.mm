#include "Utilities/TsJSON.h"

#import <Foundation/Foundation.h>
#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Base/Result.h"
#include "Base/TsLog.h"
#include "Base/TsNumberText.h"
#include "Base/TsString.h"
#include "Base/TsUnicode.h"

namespace {

// Failure codes, of the Cocoa error domain: Foundation's own for JSON, and one of ours beside it.
constexpr int kError = 3840;
constexpr int kNestedTooDeeply = 3841;

// Containers may be nested as deeply as in Foundation's own reader and writer.
constexpr std::size_t kMostLevels = 512;

// The library's own allocator returns nullptr when memory runs out, and the library writes there.
struct Allocator {
  void* Malloc(std::size_t size) { return size == 0 ? nullptr : ::operator new(size); }
  void* Realloc(void* old, std::size_t oldSize, std::size_t size) {
    void* grown = Malloc(size);
    if (old != nullptr && grown != nullptr) std::memcpy(grown, old, std::min(oldSize, size));
    Free(old);
    return grown;
  }
  static void Free(void* memory) { ::operator delete(memory); }
};

using UTF8 = rapidjson::UTF8<>;
using Buffer = rapidjson::GenericStringBuffer<UTF8, Allocator>;

// ---- Reading

// Strings are decoded where they stand in the text. Numbers are converted here: the library rounds some wrongly.
constexpr unsigned kParseFlags = rapidjson::kParseInsituFlag | rapidjson::kParseNumbersAsStringsFlag;

template <typename Integer>
bool Read(std::string_view digits, Integer& value) {
  return std::from_chars(digits.data(), digits.data() + digits.size(), value).ec == std::errc();
}

// nullptr for a number beyond the range of double.
Ref<NSObject> NewNumber(std::string_view text) {
  std::int64_t integer = 0;
  std::uint64_t large = 0;
  // The integer 0 has no sign.
  if (text != "-0" && text.find_first_of(".eE") == text.npos) {
    if (Read(text, integer)) return Adopt([[NSNumber alloc] initWithLongLong:integer]);
    if (Read(text, large)) return Adopt([[NSNumber alloc] initWithUnsignedLongLong:large]);
  }
  const auto value = TsNumberInText(text);
  if (!value) return nullptr;
  return Adopt([[NSNumber alloc] initWithDouble:*value]);
}

// Makes Cocoa objects of what the parser reports.
class Builder : public rapidjson::BaseReaderHandler<UTF8, Builder> {
 public:
  [[nodiscard]] const Ref<NSObject>& root() const { return root_; }
  [[nodiscard]] bool IsTooDeep() const { return open_.size() > kMostLevels; }

  bool Null() { return Add([NSNull null]); }
  bool Bool(bool value) { return Add([NSNumber numberWithBool:value]); }
  bool RawNumber(const char* text, rapidjson::SizeType length, bool) { return Add(NewNumber({text, length})); }
  bool String(const char* text, rapidjson::SizeType length, bool) {
    const auto string = TsNewString(std::string_view(text, length));
    return Add(string);
  }

  bool Key(const char* text, rapidjson::SizeType length, bool) {
    const auto [place, isNew] = keys_.try_emplace(std::string_view(text, length));
    if (isNew) place->second = TsNewString(place->first);
    open_.back().key = place->second;
    return true;
  }

  bool StartArray() { return Open({Adopt([[NSMutableArray alloc] init]), nullptr, nil}); }
  bool StartObject() { return Open({nullptr, Adopt([[NSMutableDictionary alloc] init]), nil}); }
  bool EndArray(rapidjson::SizeType) { return Close(); }
  bool EndObject(rapidjson::SizeType) { return Close(); }

 private:
  struct Container {
    Ref<NSMutableArray> array;
    Ref<NSMutableDictionary> dictionary;
    NSString* key;  // of the value that comes next
  };

  bool Add(NSObject* value) {
    if (value == nil || open_.empty()) return false;
    const Container& container = open_.back();
    if (container.array) [container.array addObject:value];
    if (container.dictionary) [container.dictionary setObject:value forKey:container.key];
    return true;
  }

  bool Open(Container container) {
    NSObject* made = container.array ? static_cast<NSObject*>(container.array) : container.dictionary;
    if (open_.empty()) {
      root_ = Retain(made);
    } else {
      static_cast<void>(Add(made));
    }
    open_.push_back(std::move(container));
    return !IsTooDeep();
  }

  bool Close() {
    open_.pop_back();
    return true;
  }

  Ref<NSObject> root_;
  std::vector<Container> open_;
  // The same few keys come again and again. Their texts are in the parsed document.
  std::unordered_map<std::string_view, Ref<NSString>> keys_;
};

std::string Description(rapidjson::ParseErrorCode code, const Builder& builder) {
  if (!builder.root() && code == rapidjson::kParseErrorTermination) {
    return "The JSON text does not begin with an array or a dictionary";
  }
  if (builder.IsTooDeep()) return "The JSON text is nested too deeply";
  if (code == rapidjson::kParseErrorTermination) return "The JSON text has a number that is out of range";
  return std::string("The text is not valid JSON: ") + rapidjson::GetParseError_En(code);
}

constexpr std::size_t kEscapeLength = 6;  // \uXXXX

// The UTF-16 unit of the \u escape that `text` begins with, or -1 when it begins with none.
int EscapedUnit(std::string_view text) {
  if (text.size() < kEscapeLength || text[0] != '\\' || text[1] != 'u') return -1;
  int unit = 0;
  const auto [end, error] = std::from_chars(text.data() + 2, text.data() + kEscapeLength, unit, 16);
  return error == std::errc() && end == text.data() + kEscapeLength ? unit : -1;
}

// Turns escaped lone surrogates, which JSON allows and UTF-8 cannot hold, into escaped U+FFFD of the same length.
void ReplaceLoneEscapedSurrogates(std::string& json) {
  const std::string_view text = json;
  std::size_t place = text.find('\\');
  while (place < text.size()) {
    const int unit = EscapedUnit(text.substr(place));
    std::size_t length = unit < 0 ? 2 : kEscapeLength;
    if (IsHighSurrogate(unit) && IsLowSurrogate(EscapedUnit(text.substr(place + kEscapeLength)))) {
      length = 2 * kEscapeLength;
    } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
      json.replace(place, kEscapeLength, "\\ufffd");
    }
    place = text.find('\\', place + length);
  }
}

Result<Ref<NSObject>> ReadJSON(NSString* json) {
  if (json == nil) return Fail(kError, "There is no text to read JSON from");
  std::string text = TsStdString(json);
  ReplaceLoneEscapedSurrogates(text);
  Builder builder;
  rapidjson::InsituStringStream stream(text.data());
  const auto result = rapidjson::GenericReader<UTF8, UTF8, Allocator>().Parse<kParseFlags>(stream, builder);
  if (result.IsError()) return Fail(kError, Description(result.Code(), builder));
  // The parser takes a NUL character for the end of the text.
  if (stream.Tell() != text.size()) {
    return Fail(kError, Description(rapidjson::kParseErrorDocumentRootNotSingular, builder));
  }
  return builder.root();
}

// ---- Writing

// Each function returns false once it has set `failure_`.
class Writer {
 public:
  [[nodiscard]] Result<std::string> Write(id container) {
    if (!Value(container, 1)) return tl::unexpected(failure_);
    return std::string(text_.GetString(), text_.GetSize());
  }

 private:
  bool Refuse(NSString* reason, int code = kError) {
    failure_ = {code, TsStdString(reason)};
    return false;
  }

  bool Value(id value, std::size_t level) {
    if ([value isKindOfClass:string_]) return String(value);
    if (object_getClass(value) == boolean_) return json_.Bool([value boolValue]);
    if ([value isKindOfClass:number_]) return Number(value);
    if (value == null_) return json_.Null();
    const bool isArray = [value isKindOfClass:array_];
    if (!isArray && ![value isKindOfClass:dictionary_]) {
      return Refuse([NSString stringWithFormat:@"JSON has no form for objects of the class %@", [value class]]);
    }
    if (level > kMostLevels) return Refuse(@"it is nested too deeply", kNestedTooDeeply);
    return isArray ? Array(value, level) : Dictionary(value, level);
  }

  bool Array(NSArray* array, std::size_t level) {
    json_.StartArray();
    for (id element in array) {
      if (!Value(element, level + 1)) return false;
    }
    return json_.EndArray();
  }

  bool Dictionary(NSDictionary* dictionary, std::size_t level) {
    json_.StartObject();
    for (id key in dictionary) {
      if (![key isKindOfClass:string_]) return Refuse(@"it has a key that is not a string");
      if (!String(key) || !Value([dictionary objectForKey:key], level + 1)) return false;
    }
    return json_.EndObject();
  }

  bool Number(NSNumber* number) {
    switch ([number objCType][0]) {
      case 'd':
      case 'f':
        return Double([number doubleValue]);
      case 'Q':
      case 'L':
        return json_.Uint64([number unsignedLongLongValue]);
      default:
        return json_.Int64([number longLongValue]);
    }
  }

  bool Double(double value) {
    if (!std::isfinite(value)) return Refuse(@"it contains a number that is infinite or not a number");
    const std::string text = TsNumberText(value);
    return json_.RawValue(text.data(), text.size(), rapidjson::kNumberType);
  }

  bool String(NSString* string) {
    const std::string text = TsStdString(string);
    return json_.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
  }

  // Kept, because GCC's run time looks a class up by its name wherever one is named.
  const Class string_ = [NSString class];
  const Class number_ = [NSNumber class];
  const Class boolean_ = object_getClass([NSNumber numberWithBool:YES]);
  const Class array_ = [NSArray class];
  const Class dictionary_ = [NSDictionary class];
  NSNull* const null_ = [NSNull null];

  Buffer text_;
  rapidjson::Writer<Buffer, UTF8, UTF8, Allocator> json_{text_};
  Failure failure_;
};

bool IsContainer(id object) {
  return [object isKindOfClass:[NSArray class]] || [object isKindOfClass:[NSDictionary class]];
}

Result<std::string> WriteJSON(id object) {
  if (!IsContainer(object)) return Fail(kError, "it is neither an array nor a dictionary");
  @try {
    return Writer().Write(object);
  } @catch (NSException* exception) {
    return Fail(kError, TsStdString([exception reason]));
  }
}

NSError* ErrorOf(const Failure& failure) {
  return [NSError errorWithDomain:NSCocoaErrorDomain
                             code:failure.code
                         userInfo:@{NSLocalizedDescriptionKey : TsNSString(failure.message)}];
}

// A container within itself has no end, and neither has its description.
id Describable(id object, const Failure& failure) {
  if (failure.code != kNestedTooDeeply) return object;
  return [NSString stringWithFormat:@"<%@ %p>", [object class], object];
}

}  // namespace

NSString* TsConvertToJSONString(id object) {
  const auto json = WriteJSON(object);
  if (json) return TsNSString(*json);
  TsLogError(@"Couldn't convert %@ to JSON because of %@", Describable(object, json.error()), ErrorOf(json.error()));
  return nil;
}

id TsConvertFromJSONString(NSString* string, NSError** error) {
  auto object = ReadJSON(string);
  if (object) return object->Autoreleased();
  if (error != nullptr) *error = ErrorOf(object.error());
  return nil;
}
