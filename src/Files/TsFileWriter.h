#pragma once

#import <Foundation/NSString.h>

#include <string_view>

#include "Base/Result.h"

enum class TsWriteMode { Replace, Append };

// Writes a file completely or not at all. A failure is in the log already.
[[nodiscard]] Result<void> TsWriteBytes(NSString* path, std::string_view bytes, TsWriteMode mode);
