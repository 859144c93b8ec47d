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
#include "Base/TsUnicode.h"
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

// Makes Cocoa objects of what the parser reports. A container is made at its end, when its size is known.
class Builder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Builder> {
 public:
  [[nodiscard]] bool HasBegun() const { return hasBegun_; }
  [[nodiscard]] bool IsTooDeep() const { return levels_ > kTsMostJSONLevels; }
  // After a complete document.
  [[nodiscard]] const Ref<NSObject>& root() const { return values_.front(); }

  bool Null() { return Add(Retain<NSObject>([NSNull null])); }
  bool Bool(bool value) { return Add(Retain<NSObject>([NSNumber numberWithBool:value])); }
  bool RawNumber(const char* text, rapidjson::SizeType length, bool) { return Add(NewNumber({text, length})); }
  bool String(const char* text, rapidjson::SizeType length, bool) {
    return Add(TsNewString(std::string_view(text, length)));
  }

  bool Key(const char* text, rapidjson::SizeType length, bool) {
    const auto [place, isNew] = knownKeys_.try_emplace(std::string_view(text, length));
    if (isNew) place->second = TsNewString(place->first);
    keys_.push_back(place->second);
    return true;
  }

  bool StartArray() { return Open(); }
  bool StartObject() { return Open(); }

  bool EndArray(rapidjson::SizeType count) {
    return Close(count, Adopt([[NSMutableArray alloc] initWithObjects:Last(count) count:count]));
  }

  bool EndObject(rapidjson::SizeType count) {
    const std::size_t firstKey = keys_.size() - count;
    const auto object = Adopt([[NSMutableDictionary alloc] initWithObjects:Last(count)
                                                                   forKeys:keys_.data() + firstKey
                                                                     count:count]);
    keys_.resize(firstKey);
    return Close(count, object);
  }

 private:
  bool Add(Ref<NSObject> value) {
    if (!value || levels_ == 0) return false;
    values_.push_back(std::move(value));
    return true;
  }

  bool Open() {
    hasBegun_ = true;
    ++levels_;
    return !IsTooDeep();
  }

  // Good until the next call.
  [[nodiscard]] const id* Last(std::size_t count) {
    last_.assign(values_.end() - static_cast<std::ptrdiff_t>(count), values_.end());
    return last_.data();
  }

  bool Close(std::size_t count, Ref<NSObject> container) {
    values_.resize(values_.size() - count);
    values_.push_back(std::move(container));
    --levels_;
    return true;
  }

  // The values, and the keys of the objects among them, that belong to containers still open.
  std::vector<Ref<NSObject>> values_;
  std::vector<id> keys_;
  std::vector<id> last_;
  std::size_t levels_ = 0;
  bool hasBegun_ = false;
  // The same few keys come again and again. Their texts are in the parsed document.
  std::unordered_map<std::string_view, Ref<NSString>> knownKeys_;
};

std::string Description(rapidjson::ParseErrorCode code, const Builder& builder) {
  if (!builder.HasBegun() && code == rapidjson::kParseErrorTermination) {
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
