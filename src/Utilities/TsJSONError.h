#pragma once

#import <Foundation/Foundation.h>

// Containers may be nested as deep as in Foundation's own reader and writer.
inline constexpr std::size_t kTsMostJSONLevels = 512;

// An error like those of Foundation's own JSON reader and writer.
[[nodiscard]] inline NSError* TsJSONError(NSString* description) {
  constexpr NSInteger kPropertyListReadCorruptError = 3840;
  return [NSError errorWithDomain:NSCocoaErrorDomain
                             code:kPropertyListReadCorruptError
                         userInfo:[NSDictionary dictionaryWithObject:description forKey:NSLocalizedDescriptionKey]];
}
