#import "Extensions/NSString+TsFormat.h"

#include <string_view>

#include "Base/TsLog.h"
#include "Base/TsString.h"

namespace {

constexpr char kNumber = 'd';

// Whether every directive of the format asks for the argument that `kinds` has in its place. "1$" names an argument;
// without it the directive takes the next one.
bool AsksFor(std::string_view kinds, std::string_view format) {
  std::size_t next = 0;
  for (auto sign = format.find('%'); sign != format.npos; sign = format.find('%')) {
    format.remove_prefix(sign + 1);
    if (format.starts_with('%')) {
      format.remove_prefix(1);
      continue;
    }
    const bool isNumbered = format.size() > 1 && format[1] == '$' && format[0] >= '1' && format[0] <= '9';
    const std::size_t place = isNumbered ? static_cast<std::size_t>(format[0] - '1') : next++;
    const auto length = format.find_first_not_of("-+ 0123456789.'", isNumbered ? 2 : 0);
    const auto kind = format.find_first_not_of("hlqzjt", length);
    if (kind == format.npos || place >= kinds.size()) return false;
    const bool isNumber = std::string_view("diuDUxXo").find(format[kind]) != format.npos;
    if ((isNumber ? kNumber : format[kind]) != kinds[place]) return false;
  }
  return true;
}

bool Fits(NSString* format, std::string_view arguments) {
  if (AsksFor(arguments, TsStdString(format))) return true;
  TsLogWarning(@"The format \"%@\" does not match its arguments", format);
  return false;
}

}  // namespace

@implementation NSString (TsFormat)

- (NSString*)ts_prefixOfLength:(NSUInteger)length {
  if ([self length] <= length) return self;
  const NSRange cut = [self rangeOfComposedCharacterSequenceAtIndex:length];
  // A character with no end of combining marks is cut all the same.
  const NSUInteger end = cut.location > 0 ? cut.location : length;
  return [self substringToIndex:end];
}

- (NSString*)ts_formatWithText:(NSString*)text {
  return Fits(self, "@") ? [NSString stringWithFormat:self, text] : self;
}

- (NSString*)ts_formatWithText:(NSString*)text number:(NSInteger)number {
  return Fits(self, "@d") ? [NSString stringWithFormat:self, text, number] : self;
}

@end
