#include "Utilities/TsJSONReader.h"

#import <Foundation/Foundation.h>
#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Base/TsNumberText.h"
#include "Base/TsString.h"
#include "Utilities/TsJSONWriter.h"

namespace {

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
class Builder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Builder> {
 public:
  [[nodiscard]] const Ref<NSObject>& root() const { return root_; }
  [[nodiscard]] bool IsTooDeep() const { return open_.size() > kTsMostJSONLevels; }

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

bool IsHighSurrogate(int unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(int unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

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

}  // namespace

Result<Ref<NSObject>> TsReadJSON(NSString* json) {
  if (json == nil) return Fail(kTsJSONError, "There is no text to read JSON from");
  std::string text = TsStdString(json);
  ReplaceLoneEscapedSurrogates(text);
  Builder builder;
  rapidjson::InsituStringStream stream(text.data());
  const auto result = rapidjson::Reader().Parse<kParseFlags>(stream, builder);
  if (result.IsError()) return Fail(kTsJSONError, Description(result.Code(), builder));
  // The parser takes a NUL character for the end of the text.
  if (stream.Tell() != text.size()) {
    return Fail(kTsJSONError, Description(rapidjson::kParseErrorDocumentRootNotSingular, builder));
  }
  return builder.root();
}
