#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Migration/TsStoreFile.h"
#include "Utilities/TsJSONText.h"

enum class TsWhenMissing : std::uint8_t { Null, False };

struct TsExportedAttribute {
  std::string_view key;
  std::string_view attribute = key;
  TsWhenMissing whenMissing = TsWhenMissing::Null;
};

using TsExportText = TsJSONText<char>;  // UTF-8

// Writes objects in the form in which they leave their store: as JSON, without a detour over objects of Foundation, as
// there may be very many.
class TsExport {
 public:
  // Numbers, Booleans and texts.
  TsExport(std::string_view className, std::initializer_list<TsExportedAttribute> attributes);

  // A JSON object but for its closing brace, for what has no attribute.
  void Open(TsExportText& json, const TsStoreFile& store, const TsStoreObject& object) const;

 private:
  struct Attribute {
    std::string lead;  // up to the value
    std::size_t position;
    TsAttributeType type;
    TsWhenMissing whenMissing;
  };

  std::vector<Attribute> attributes_;
};

// null for none.
void TsPutText(TsExportText& json, std::optional<std::string_view> text);
