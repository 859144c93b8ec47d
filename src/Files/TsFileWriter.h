#pragma once

#import <Foundation/NSString.h>

#include <string_view>

enum class TsWriteMode { Replace, Append };

// Writes a file completely or not at all. Gives nil, or the text that tells a person why it couldn't be.
[[nodiscard]] NSString* TsWriteBytes(NSString* path, std::string_view bytes, TsWriteMode mode);
