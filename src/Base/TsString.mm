#include "Base/TsString.h"

#import <Foundation/Foundation.h>

#include <utility>
#include <vector>

#include "Base/TsUnicode.h"
#include "Platform/FoundationValues.h"

namespace platform = tessaro::platform;

std::string TsStdString(NSString* string) {
  if (string == nil) return {};
  const auto contents = platform::StringContents(string);
  if (contents.latin1 != nullptr) return Latin1ToUtf8(contents.latin1, contents.length);
  if (contents.utf16 != nullptr) return Utf16ToUtf8(contents.utf16, contents.length);
  std::vector<char16_t> characters([string length]);
  [string getCharacters:reinterpret_cast<unichar*>(characters.data()) range:NSMakeRange(0, characters.size())];
  return Utf16ToUtf8(characters.data(), characters.size());
}

Ref<NSString> TsNewString(std::string_view utf8) {
  auto plain = platform::NewLatin1String(utf8.size());
  if (CopyAscii(utf8, plain.characters)) return std::move(plain.string);
  const std::u16string characters = Utf8ToUtf16(utf8);
  auto made = platform::NewUtf16String(characters.size());
  characters.copy(made.characters, characters.size());
  return std::move(made.string);
}

NSString* TsNSString(std::string_view utf8) { return TsNewString(utf8).Autoreleased(); }
