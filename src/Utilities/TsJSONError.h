#pragma once

#import <Foundation/Foundation.h>

// Containers may be nested as deep as in Foundation's own reader and writer.
inline constexpr std::size_t kTsMostJSONLevels = 512;

// Codes of the Cocoa error domain: the one of Foundation's own reader and writer, and one of ours beside it.
inline constexpr NSInteger kTsJSONError = 3840;
inline constexpr NSInteger kTsJSONNestedTooDeeply = 3841;

// An error like those of Foundation's own JSON reader and writer.
[[nodiscard]] inline NSError* TsJSONError(NSString* description, NSInteger code = kTsJSONError) {
  return [NSError errorWithDomain:NSCocoaErrorDomain
                             code:code
                         userInfo:[NSDictionary dictionaryWithObject:description forKey:NSLocalizedDescriptionKey]];
}
