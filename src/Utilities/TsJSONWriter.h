#pragma once

#import <Foundation/NSObject.h>

#include <string>

#include "Base/Result.h"

// Failure codes, of the Cocoa error domain: Foundation's own for JSON, and one of ours beside it.
inline constexpr int kTsJSONError = 3840;
inline constexpr int kTsJSONNestedTooDeeply = 3841;

// Containers may be nested as deeply as in Foundation's own reader and writer.
inline constexpr std::size_t kTsMostJSONLevels = 512;

// Compact JSON of an array or a dictionary, as UTF-8.
[[nodiscard]] Result<std::string> TsWriteJSON(id object);
