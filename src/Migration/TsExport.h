#pragma once

#import <Foundation/Foundation.h>

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "Migration/TsStoreFile.h"
#include "Utilities/Ref.h"

enum class TsWhenMissing : std::uint8_t { Null, False };

struct TsExportedAttribute {
  std::string_view key;
  std::string_view attribute = key;
  TsWhenMissing whenMissing = TsWhenMissing::Null;
};

// Makes the dictionaries in which objects leave their store, straight from the store, as there may be very many.
class TsExport {
 public:
  // Of what has no attribute the caller says the values.
  TsExport(std::string_view className, std::initializer_list<TsExportedAttribute> attributes,
           std::initializer_list<std::string_view> otherKeys = {});

  // `others` are the values of the other keys; nil becomes null.
  [[nodiscard]] Ref<NSDictionary> NewDictionary(const TsStoreFile& store, const TsStoreObject& object,
                                                std::initializer_list<id> others = {}) const;

 private:
  struct Attribute {
    std::size_t position;
    TsAttributeType type;
    TsWhenMissing whenMissing;
  };

  std::vector<Ref<NSString>> keys_;
  std::vector<Attribute> attributes_;
};
