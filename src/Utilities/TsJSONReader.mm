#include "Utilities/TsJSONReader.h"

#define SIMDJSON_EXCEPTIONS 0
#include <simdjson.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "Base/TsString.h"
#include "Base/TsUnicode.h"
#include "Platform/FoundationValues.h"
#include "Utilities/TsJSONError.h"
#include "Utilities/TsJSONRepair.h"

namespace platform = tessaro::platform;

namespace {

// Working memory up to this size is kept from one document to the next.
constexpr std::size_t kKeptCapacity = 4 << 20;

using Element = simdjson::dom::element;

// The keys of one document, of which the same few come again and again.
class KeyCache {
 public:
  // The string at +1.
  NSString* Key(std::string_view text) {
    const std::size_t place = SlotOf(text);
    Ref<NSString>& slot = keys_[place];
    std::string_view& slotText = texts_[place];
    if (!slot || slotText != text) {
      slot = TsNewString(text);
      slotText = text;
    }
    return platform::RetainedString(slot);
  }

 private:
  static constexpr std::size_t kSlots = 256;

  static std::size_t SlotOf(std::string_view text) {
    if (text.empty()) return 0;
    const auto first = static_cast<unsigned char>(text.front());
    const auto middle = static_cast<unsigned char>(text[text.size() / 2]);
    const auto last = static_cast<unsigned char>(text.back());
    return (text.size() * 131 + first * 31 + middle * 7 + last) % kSlots;
  }

  std::array<Ref<NSString>, kSlots> keys_;
  std::array<std::string_view, kSlots> texts_;  // in the parsed document
};

// Makes Cocoa objects of a parsed document. Each is made at +1 and handed to its container.
class Builder {
 public:
  id Make(Element element) {
    switch (element.type()) {
      case simdjson::dom::element_type::ARRAY:
        return MakeArray(element.get_array().value_unsafe());
      case simdjson::dom::element_type::OBJECT:
        return MakeDictionary(element.get_object().value_unsafe());
      case simdjson::dom::element_type::STRING:
        return TsNewString(element.get_string().value_unsafe()).Leak();
      case simdjson::dom::element_type::INT64:
        return platform::NewNumber(element.get_int64().value_unsafe()).Leak();
      case simdjson::dom::element_type::UINT64:
        return platform::NewNumber(element.get_uint64().value_unsafe()).Leak();
      case simdjson::dom::element_type::DOUBLE:
        return platform::NewNumber(element.get_double().value_unsafe()).Leak();
      case simdjson::dom::element_type::BOOL:
        return [element.get_bool().value_unsafe() ? yes_ : no_ retain];
      case simdjson::dom::element_type::NULL_VALUE:
        return [null_ retain];
    }
    return nil;
  }

 private:
  id MakeArray(simdjson::dom::array array) {
    const std::size_t first = values_.size();
    for (const Element element : array) values_.push_back(Make(element));
    const std::size_t count = values_.size() - first;
    id made = [[NSMutableArray alloc] initWithObjects:values_.data() + first count:count];
    for (std::size_t i = first; i < values_.size(); ++i) [values_[i] release];
    values_.resize(first);
    return made;
  }

  id MakeDictionary(simdjson::dom::object object) {
    const std::size_t first = values_.size();
    const std::size_t firstKey = keys_.size();
    for (const auto field : object) {
      keys_.push_back(keyCache_.Key(field.key));
      values_.push_back(Make(field.value));
    }
    const std::size_t count = values_.size() - first;
    auto made = platform::NewMutableDictionary(keys_.data() + firstKey, values_.data() + first, count);
    keys_.resize(firstKey);
    values_.resize(first);
    return made.Leak();
  }

  NSNumber* const yes_ = [NSNumber numberWithBool:YES];
  NSNumber* const no_ = [NSNumber numberWithBool:NO];
  NSNull* const null_ = [NSNull null];
  KeyCache keyCache_;
  // Of the containers that are being made, from the outermost in. Keys and values are at +1.
  std::vector<id> values_;
  std::vector<NSString*> keys_;
};

// One document at a time, with memory kept for the next.
class Parser {
 public:
  Parser() { static_cast<void>(parser_.allocate(0, kTsMostJSONLevels)); }

  [[nodiscard]] simdjson::error_code Parse(NSString* string, Element& root) {
    FillText(string);
    simdjson::error_code error = ParseText(root);
    if (error == simdjson::NUMBER_ERROR || error == simdjson::STRING_ERROR) {
      text_ = TsRepairJSON({text_.data(), length_});
      length_ = text_.size();
      error = ParseText(root);
    }
    return error;
  }

  [[nodiscard]] bool IsLarge() const { return text_.capacity() > kKeptCapacity; }

 private:
  // Straight into the padded text that the parser wants.
  void FillText(NSString* string) {
    const auto contents = platform::StringContents(string);
    if (contents.latin1 != nullptr) {
      MakeRoom(contents.length * 2);
      length_ = Latin1ToUtf8(contents.latin1, contents.length, text_.data());
      return;
    }
    if (contents.utf16 != nullptr) return FillFromUtf16(contents.utf16, contents.length);
    std::vector<char16_t> characters([string length]);
    [string getCharacters:reinterpret_cast<unichar*>(characters.data()) range:NSMakeRange(0, characters.size())];
    FillFromUtf16(characters.data(), characters.size());
  }

  void FillFromUtf16(const char16_t* characters, std::size_t length) {
    MakeRoom(length * 3);
    length_ = Utf16ToUtf8(characters, length, text_.data());
  }

  void MakeRoom(std::size_t size) {
    if (text_.size() < size + simdjson::SIMDJSON_PADDING) text_.resize(size + simdjson::SIMDJSON_PADDING);
  }

  [[nodiscard]] simdjson::error_code ParseText(Element& root) {
    MakeRoom(length_);
    return parser_.parse(text_.data(), length_, /*realloc_if_needed=*/false).get(root);
  }

  simdjson::dom::parser parser_;
  std::string text_;
  std::size_t length_ = 0;
};

NSString* Describe(simdjson::error_code error) {
  return [NSString stringWithFormat:@"The text is not valid JSON: %s", simdjson::error_message(error)];
}

id Fail(NSString* description, NSError** error) {
  if (error != nullptr) *error = TsJSONError(description);
  return nil;
}

}  // namespace

id TsReadJSON(NSString* string, NSError** error) {
  if (string == nil) return Fail(@"There is no text to read JSON from", error);
  static thread_local auto parser = std::make_unique<Parser>();
  Element root;
  const simdjson::error_code result = parser->Parse(string, root);
  id made = nil;
  if (result != simdjson::SUCCESS) {
    Fail(Describe(result), error);
  } else if (!root.is_array() && !root.is_object()) {
    Fail(@"The JSON text does not begin with an array or a dictionary", error);
  } else {
    made = [Builder().Make(root) autorelease];
  }
  if (parser->IsLarge()) parser = std::make_unique<Parser>();
  return made;
}
