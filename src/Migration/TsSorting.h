#pragma once

#import <Foundation/Foundation.h>

#include <algorithm>
#include <limits>
#include <vector>

// The objects of `array` by their keys, of which each is asked once; equal ones keep their order. Autoreleased.
template <typename KeyOf>
[[nodiscard]] NSArray* TsSorted(NSArray* array, const KeyOf& keyOf) {
  struct Entry {
    decltype(keyOf(nil)) key;
    id object;
  };
  std::vector<Entry> entries;
  entries.reserve([array count]);
  for (id object in array) entries.push_back({keyOf(object), object});
  std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.key < b.key; });
  NSMutableArray* sorted = [NSMutableArray arrayWithCapacity:entries.size()];
  for (const Entry& entry : entries) [sorted addObject:entry.object];
  return sorted;
}

// A missing value comes first.
[[nodiscard]] inline double TsSortKey(NSNumber* number) {
  return number != nil ? [number doubleValue] : -std::numeric_limits<double>::infinity();
}

[[nodiscard]] inline double TsSortKey(NSDate* date) {
  return date != nil ? [date timeIntervalSinceReferenceDate] : -std::numeric_limits<double>::infinity();
}
