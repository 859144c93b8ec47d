#include "Base/TsString.h"

#import <Foundation/Foundation.h>

#include "Base/TsUnicode.h"

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Foundation takes a leading U+FEFF for a byte order mark and drops it, so that the text is made behind another
// character.
Ref<NSString> NewStringBehindSpace(std::string_view utf8) {
  const std::u16string characters = u' ' + Utf8ToUtf16(utf8);
  const auto text = Adopt([[NSString alloc] initWithCharacters:reinterpret_cast<const unichar*>(characters.data())
                                                        length:characters.size()]);
  return Retain([text substringFromIndex:1]);
}

}  // namespace

std::string TsStdString(NSString* string) {
  std::u16string characters([string length], u'\0');
  [string getCharacters:reinterpret_cast<unichar*>(characters.data()) range:NSMakeRange(0, characters.size())];
  return Utf16ToUtf8(characters.data(), characters.size());
}

Ref<NSString> TsNewString(std::string_view utf8) {
  if (utf8.starts_with(kByteOrderMark)) return NewStringBehindSpace(utf8);
  auto text = Adopt([[NSString alloc] initWithBytes:utf8.data() length:utf8.size() encoding:NSUTF8StringEncoding]);
  return text ? text : NewStringBehindSpace(utf8);
}

NSString* TsNSString(std::string_view utf8) { return TsNewString(utf8).Autoreleased(); }
