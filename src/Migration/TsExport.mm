#import "Migration/TsExport.h"

#include <algorithm>
#include <array>
#include <string>

#include "Migration/TsStoreValue.h"
#include "Platform/FoundationValues.h"
#include "Utilities/TsString.h"

namespace {

constexpr std::size_t kMostKeys = 32;

Ref<NSObject> Missing(TsWhenMissing whenMissing) {
  static const Ref<NSObject> kNull = Retain<NSObject>([NSNull null]);
  static const Ref<NSObject> kFalse = Retain<NSObject>([NSNumber numberWithBool:NO]);
  return whenMissing == TsWhenMissing::Null ? kNull : kFalse;
}

}  // namespace

TsExport::TsExport(std::string_view className, std::initializer_list<TsExportedAttribute> attributes,
                   std::initializer_list<std::string_view> otherKeys) {
  const auto& known = TsEntityOfClass(className)->attributes;
  for (const TsExportedAttribute& exported : attributes) {
    const auto found = std::find_if(known.begin(), known.end(),
                                    [&](const TsAttribute& each) { return each.name == exported.attribute; });
    keys_.push_back(TsNewString(exported.key));
    attributes_.push_back({static_cast<std::size_t>(found - known.begin()), found->type, exported.whenMissing});
  }
  for (const std::string_view key : otherKeys) keys_.push_back(TsNewString(key));
}

Ref<NSDictionary> TsExport::NewDictionary(const TsStoreFile& store, const TsStoreObject& object,
                                          std::initializer_list<id> others) const {
  std::array<NSString*, kMostKeys> keys;
  std::array<id, kMostKeys> values;
  std::transform(keys_.begin(), keys_.end(), keys.begin(),
                 [](const Ref<NSString>& key) { return tessaro::platform::RetainedString(key); });
  std::size_t count = 0;
  std::string buffer;
  for (const auto& [position, type, whenMissing] : attributes_) {
    const auto text = store.Value(object, position, buffer);
    Ref<NSObject> value = text ? TsNewStoreValue(type, *text) : nullptr;
    if (!value) value = Missing(whenMissing);
    values[count++] = value.Leak();
  }
  for (id value : others) values[count++] = value != nil ? [value retain] : Missing(TsWhenMissing::Null).Leak();
  return Adopt<NSDictionary>(tessaro::platform::NewMutableDictionary(keys.data(), values.data(), count).Leak());
}
