#pragma once

#import <Foundation/NSString.h>

#include "Platform/FoundationValues.h"

// An immutable string with its characters behind the object, as Latin-1 or UTF-16. Made by NewLatin1String() and
// NewUtf16String() only.
@interface TsCompactString : NSString {
 @private
  std::uint32_t _extraReferences;
  std::uint32_t _isWide;
  NSUInteger _length;
  NSUInteger _hash;  // 0 until it is asked for
}
- (tessaro::platform::StringView)contents;
@end
