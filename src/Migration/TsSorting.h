#pragma once

#import <Foundation/Foundation.h>

#include <algorithm>
#include <vector>

// The objects of `array`, sorted; equal ones keep their order. Autoreleased.
template <typename IsBefore>
[[nodiscard]] NSArray* TsSorted(NSArray* array, const IsBefore& isBefore) {
  std::vector<id> objects([array count]);
  [array getObjects:objects.data() range:NSMakeRange(0, objects.size())];
  std::stable_sort(objects.begin(), objects.end(), isBefore);
  return [NSArray arrayWithObjects:objects.data() count:objects.size()];
}

// nil comes first.
template <typename Comparable>
[[nodiscard]] NSComparisonResult TsCompare(Comparable* a, Comparable* b) {
  if (a == nil || b == nil) return a == b ? NSOrderedSame : a == nil ? NSOrderedAscending : NSOrderedDescending;
  return [a compare:b];
}
