#import "Extensions/NSString+TsFormat.h"

#include <string_view>

#include "Base/TsLog.h"
#include "Base/TsString.h"

namespace {

constexpr char kText = '@';
constexpr char kNumber = 'd';

// Reads the directives of a format one by one.
class FormatReader {
 public:
  explicit FormatReader(std::string_view format) : rest_(format) {}

  // Whether every directive asks for the argument that `kinds` has in its place.
  [[nodiscard]] bool Fits(std::string_view kinds) {
    while (SkipTo('%')) {
      if (Skip('%')) continue;
      const std::size_t place = Place();
      SkipAnyOf("-+ 0123456789.'");
      SkipAnyOf("hlqzjt");
      if (place >= kinds.size() || Kind() != kinds[place]) return false;
    }
    return true;
  }

 private:
  bool SkipTo(char character) {
    const auto found = rest_.find(character);
    rest_.remove_prefix(found == rest_.npos ? rest_.size() : found + 1);
    return found != rest_.npos;
  }

  bool Skip(char character) {
    if (!rest_.starts_with(character)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  void SkipAnyOf(std::string_view characters) {
    const auto end = rest_.find_first_not_of(characters);
    rest_.remove_prefix(end == rest_.npos ? rest_.size() : end);
  }

  // "1$" names an argument; without it the directive takes the next one.
  std::size_t Place() {
    if (rest_.size() < 2 || rest_[1] != '$' || rest_[0] < '1' || rest_[0] > '9') return next_++;
    const std::size_t place = static_cast<std::size_t>(rest_[0] - '1');
    rest_.remove_prefix(2);
    return place;
  }

  char Kind() {
    if (Skip(kText)) return kText;
    for (const char integer : {'d', 'i', 'u', 'D', 'U', 'x', 'X', 'o'}) {
      if (Skip(integer)) return kNumber;
    }
    return '\0';
  }

  std::string_view rest_;
  std::size_t next_ = 0;
};

bool Fits(NSString* format, std::string_view arguments) {
  if (FormatReader(TsStdString(format)).Fits(arguments)) return true;
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
