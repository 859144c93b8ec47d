#import "Migration/TsExport.h"

#include <array>
#include <cstddef>

#include "Platform/FoundationValues.h"

NSDictionary* TsExported(std::initializer_list<std::pair<NSString*, id>> values) {
  constexpr std::size_t kMostValues = 32;
  std::array<NSString*, kMostValues> keys;
  std::array<id, kMostValues> objects;
  std::size_t count = 0;
  for (const auto& [key, value] : values) {
    keys[count] = [key retain];
    objects[count++] = [(value != nil ? value : [NSNull null]) retain];
  }
  return tessaro::platform::NewMutableDictionary(keys.data(), objects.data(), count).Autoreleased();
}
