#import <Foundation/Foundation.h>

#include "Probe.h"
#include "Utilities/TsJSON.h"

namespace {

// The way in and out again, or the error of a text that is refused.
id roundTrip(NSString* text) {
  NSError* error = nil;
  if (id object = TsConvertFromJSONString(text, &error)) return TsConvertToJSONString(object);
  return [NSString stringWithFormat:@"%@ %ld %@", [error domain], [error code], [error localizedDescription]];
}

// Objects that JSON can't hold, by name.
id writeUnfit(NSString* name) {
  NSMutableArray* cycle = [NSMutableArray array];
  [static_cast<id>(cycle) addObject:cycle];
  NSMutableArray* deep = [NSMutableArray array];
  for (int level = 1; level < 513; ++level) deep = [NSMutableArray arrayWithObject:deep];
  NSDictionary* unfit = [NSDictionary
      dictionaryWithObjectsAndKeys:[NSArray arrayWithObject:[NSDate date]], @"date",
                                   [NSArray arrayWithObject:[NSData data]], @"data",
                                   [NSDictionary dictionaryWithObject:@"x" forKey:[NSNumber numberWithInt:1]], @"key",
                                   [NSArray arrayWithObject:[NSNumber numberWithDouble:NAN]], @"nan",
                                   [NSArray arrayWithObject:[NSNumber numberWithDouble:-INFINITY]], @"infinity", cycle,
                                   @"cycle", deep, @"deep", @"text", @"text", nil];
  NSString* json = TsConvertToJSONString([unfit objectForKey:name]);
  if ([cycle count] > 0) [cycle removeAllObjects];
  return json;
}

// Numbers as Foundation makes them, which scripts never do.
id writeNumbers() {
  const auto byte = static_cast<unsigned char>(255);
  const auto small = static_cast<signed char>(-1);
  return TsConvertToJSONString(
      @[ Truth(true), Truth(false), @(small), @(byte), @1, @(INT64_MIN), @(UINT64_MAX), @0.5F, @0.1 ]);
}

PROBES("values", roundTrip, writeUnfit, writeNumbers);

}  // namespace
