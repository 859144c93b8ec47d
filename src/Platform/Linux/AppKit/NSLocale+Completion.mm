#import <Foundation/Foundation.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "Base/TextPieces.h"
#include "Base/TsString.h"

namespace {

std::string_view Environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

// The one locale that messages are in.
std::string_view MessagesLocale() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    if (const auto value = Environment(name); !value.empty()) return value;
  }
  return "";
}

// The BCP 47 identifier for a POSIX locale name: "de-AT" for "de_AT.UTF-8@euro"; empty for "C" and "POSIX".
std::string LanguageIdentifier(std::string_view locale) {
  std::string identifier(locale.substr(0, locale.find_first_of(".@")));
  if (identifier == "C" || identifier == "POSIX") return {};
  std::replace(identifier.begin(), identifier.end(), '_', '-');
  return identifier;
}

}  // namespace

// GNUstep returns languages without their regions: "de" to a user in Austria.
@implementation NSLocale (Completion)

+ (NSArray*)preferredLanguages {
  NSMutableArray* languages = [NSMutableArray array];
  const auto add = [languages](std::string_view locale) {
    NSString* language = TsNSString(LanguageIdentifier(locale));
    if ([language length] > 0 && ![languages containsObject:language]) [languages addObject:language];
  };
  // As gettext has it: LANGUAGE counts only where a language is set at all.
  if (!LanguageIdentifier(MessagesLocale()).empty()) {
    for (const std::string_view locale : Split(Environment("LANGUAGE"), ':')) add(locale);
  }
  add(MessagesLocale());
  if ([languages count] == 0) add("en");
  return languages;
}

@end
