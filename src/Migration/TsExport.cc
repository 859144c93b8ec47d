#include "Migration/TsExport.h"

#include <algorithm>

#include "Migration/TsStoreText.h"

namespace {

// False when the text is no value of the type.
bool PutValue(TsExportText& json, TsAttributeType type, std::string_view text) {
  if (type == TsAttributeType::Text) {
    TsPutText(json, text);
    return true;
  }
  if (type == TsAttributeType::Boolean) {
    const auto value = TsBooleanInStore(text);
    if (value) json.Put(*value ? "true" : "false");
    return value.has_value();
  }
  if (const auto integer = TsNumberInStore<std::int64_t>(text)) {
    json.PutNumber(*integer);
    return true;
  }
  const auto number = TsNumberInStore<double>(text);
  if (number) json.PutNumber(*number);
  return number.has_value();
}

}  // namespace

TsExport::TsExport(std::string_view className, std::initializer_list<TsExportedAttribute> attributes) {
  const auto& known = TsEntityOfClass(className)->attributes;
  for (const TsExportedAttribute& exported : attributes) {
    const auto found = std::find_if(known.begin(), known.end(),
                                    [&](const TsAttribute& each) { return each.name == exported.attribute; });
    std::string lead(attributes_.empty() ? "{\"" : ",\"");
    lead.append(exported.key).append("\":");
    attributes_.push_back(
        {std::move(lead), static_cast<std::size_t>(found - known.begin()), found->type, exported.whenMissing});
  }
}

void TsExport::Open(TsExportText& json, const TsStoreFile& store, const TsStoreObject& object) const {
  std::string buffer;
  for (const auto& [lead, position, type, whenMissing] : attributes_) {
    json.Put(lead);
    const auto text = store.Value(object, position, buffer);
    if (text && PutValue(json, type, *text)) continue;
    json.Put(whenMissing == TsWhenMissing::Null ? "null" : "false");
  }
}

void TsPutText(TsExportText& json, std::optional<std::string_view> text) {
  if (!text) return json.Put("null");
  json.PutQuoted(text->data(), text->size());
}
