#include "Utilities/TsJSONReader.h"

#import <Foundation/Foundation.h>

#define SIMDJSON_EXCEPTIONS 0
#include <simdjson.h>

#include <string>
#include <string_view>
#include <unordered_map>

#include "Base/TsString.h"
#include "Utilities/TsJSONRepair.h"
#include "Utilities/TsJSONWriter.h"

namespace {

using Element = simdjson::dom::element;

// Makes Cocoa objects of a parsed document.
class Builder {
 public:
  Ref<NSObject> Make(Element element) {
    switch (element.type()) {
      case simdjson::dom::element_type::ARRAY:
        return MakeArray(element.get_array().value_unsafe());
      case simdjson::dom::element_type::OBJECT:
        return MakeDictionary(element.get_object().value_unsafe());
      case simdjson::dom::element_type::STRING:
        return TsNewString(element.get_string().value_unsafe());
      case simdjson::dom::element_type::INT64:
        return Adopt([[NSNumber alloc] initWithLongLong:element.get_int64().value_unsafe()]);
      case simdjson::dom::element_type::UINT64:
        return Adopt([[NSNumber alloc] initWithUnsignedLongLong:element.get_uint64().value_unsafe()]);
      case simdjson::dom::element_type::DOUBLE:
        return Adopt([[NSNumber alloc] initWithDouble:element.get_double().value_unsafe()]);
      case simdjson::dom::element_type::BOOL:
        return Retain([NSNumber numberWithBool:element.get_bool().value_unsafe()]);
      case simdjson::dom::element_type::NULL_VALUE:
        return Retain([NSNull null]);
    }
    return nullptr;
  }

 private:
  Ref<NSObject> MakeArray(simdjson::dom::array array) {
    const auto made = Adopt([[NSMutableArray alloc] initWithCapacity:array.size()]);
    for (const Element element : array) {
      const auto value = Make(element);
      [made addObject:value];
    }
    return made;
  }

  Ref<NSObject> MakeDictionary(simdjson::dom::object object) {
    const auto made = Adopt([[NSMutableDictionary alloc] initWithCapacity:object.size()]);
    for (const auto field : object) {
      const auto value = Make(field.value);
      [made setObject:value forKey:Key(field.key)];
    }
    return made;
  }

  // The same few keys come again and again.
  NSString* Key(std::string_view text) {
    const auto [place, isNew] = keys_.try_emplace(text);
    if (isNew) place->second = TsNewString(text);
    return place->second;
  }

  std::unordered_map<std::string_view, Ref<NSString>> keys_;  // the texts are in the parsed document
};

simdjson::error_code Parse(simdjson::dom::parser& parser, const std::string& text, Element& root) {
  return parser.parse(text).get(root);
}

}  // namespace

Result<Ref<NSObject>> TsReadJSON(NSString* json) {
  if (json == nil) return Fail(kTsJSONError, "There is no text to read JSON from");
  simdjson::dom::parser parser;
  static_cast<void>(parser.allocate(0, kTsMostJSONLevels));
  std::string text = TsStdString(json);
  Element root;
  simdjson::error_code error = Parse(parser, text, root);
  if (error == simdjson::NUMBER_ERROR || error == simdjson::STRING_ERROR) {
    text = TsRepairJSON(text);
    error = Parse(parser, text, root);
  }
  if (error != simdjson::SUCCESS) {
    return Fail(kTsJSONError, std::string("The text is not valid JSON: ") + simdjson::error_message(error));
  }
  if (!root.is_array() && !root.is_object()) {
    return Fail(kTsJSONError, "The JSON text does not begin with an array or a dictionary");
  }
  return Builder().Make(root);
}
