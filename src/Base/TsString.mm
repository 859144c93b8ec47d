#include "Base/TsString.h"

#import <Foundation/Foundation.h>

#include "Base/TsUnicode.h"

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr char16_t kByteOrderMarkUnit = 0xFEFF;

// Without an early return, which would keep the compiler from looking at many characters at once.
bool IsASCII(std::string_view text) {
  unsigned char bits = 0;
  for (const char character : text) bits |= static_cast<unsigned char>(character);
  return bits < 0x80;
}

}  // namespace

std::optional<std::string> TsLatin1(NSString* string) {
  if ([string fastestEncoding] != NSISOLatin1StringEncoding) return std::nullopt;
  const NSUInteger length = [string length];
  std::string bytes(length + 1, '\0');
  if (![string getCString:bytes.data() maxLength:bytes.size() encoding:NSISOLatin1StringEncoding]) return std::nullopt;
  bytes.resize(length);
  return bytes;
}

std::u16string TsCharacters(NSString* string) {
  std::u16string characters([string length], u'\0');
  [string getCharacters:reinterpret_cast<unichar*>(characters.data()) range:NSMakeRange(0, characters.size())];
  return characters;
}

std::string TsStdString(NSString* string) {
  if (auto bytes = TsLatin1(string); bytes && IsASCII(*bytes)) return *std::move(bytes);
  return Utf16ToUtf8(TsCharacters(string));
}

Ref<NSString> TsNewString(std::u16string utf16) {
  ReplaceLoneSurrogates(utf16);
  // Foundation drops a leading byte order mark: make the text behind another character.
  const bool isMarked = utf16.starts_with(kByteOrderMarkUnit);
  if (isMarked) utf16.insert(utf16.begin(), u' ');
  const auto text = Adopt([[NSString alloc] initWithCharacters:reinterpret_cast<const unichar*>(utf16.data())
                                                        length:utf16.size()]);
  return isMarked ? Retain<NSString>([text substringFromIndex:1]) : text;
}

Ref<NSString> TsNewString(std::string_view utf8) {
  // Foundation tests each byte of the other encodings.
  if (IsASCII(utf8)) {
    return Adopt([[NSString alloc] initWithBytes:utf8.data() length:utf8.size() encoding:NSISOLatin1StringEncoding]);
  }
  if (!utf8.starts_with(kByteOrderMark)) {
    auto text = Adopt([[NSString alloc] initWithBytes:utf8.data() length:utf8.size() encoding:NSUTF8StringEncoding]);
    if (text) return text;
  }
  return TsNewString(Utf8ToUtf16(utf8));
}

NSString* TsNSString(std::string_view utf8) { return TsNewString(utf8).Autoreleased(); }

NSArray* TsNSArray(const std::vector<std::string>& texts) {
  NSMutableArray* array = [NSMutableArray arrayWithCapacity:texts.size()];
  for (const std::string& text : texts) [array addObject:TsNSString(text)];
  return array;
}
