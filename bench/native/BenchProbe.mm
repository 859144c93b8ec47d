#import <Foundation/Foundation.h>

#include <chrono>

#include "Platform/Common/UpdateDecision.h"
#include "Probe.h"
#include "Utilities/TsJSON.h"

// Probes of the benchmarks alone.

namespace platform = tessaro::platform;

namespace {

// The number of the update's item, or -1.
int decideOnly(std::string_view feed, std::string current, std::string system, std::string channel) {
  const auto decision = platform::DecideUpdate(feed, {current, system, channel, {"linux", {"de", "en"}}, "3.7"});
  return decision && decision->update ? static_cast<int>(*decision->update) : -1;
}

// Nanoseconds of each passage through a door, without the script boundary.
template <typename Door>
id TimeDoor(int rounds, Door door) {
  NSMutableArray* samples = [NSMutableArray array];
  for (int round = 0; round < rounds; ++round) {
    const auto start = std::chrono::steady_clock::now();
    @autoreleasepool {
      static_cast<void>(door());
    }
    const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
    [samples addObject:@(elapsed.count())];
  }
  return samples;
}

id timeRead(NSString* text, int rounds) {
  return TimeDoor(rounds, [&] { return TsConvertFromJSONString(text, nullptr); });
}

id timeWrite(NSString* text, int rounds) {
  id object = TsConvertFromJSONString(text, nullptr);
  return TimeDoor(rounds, [&] { return TsConvertToJSONString(object); });
}

}  // namespace

void AttachBenchProbe(v8::Local<v8::Object> exports) {
  PROBE(decideOnly);
  PROBE(timeRead);
  PROBE(timeWrite);
}
