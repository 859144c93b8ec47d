#include "Base/TsLog.h"

#import <Foundation/Foundation.h>

#include "Base/Ref.h"
#include "Base/TsString.h"

namespace {

// A character of no text, in the place of a format's own line feeds, which stay while those of its arguments are
// escaped.
NSString* const kOwnLineFeed = @"\uFDD0";

std::string Escaped(NSString* message, NSUInteger ownLineFeeds) {
  NSArray* lines = [message componentsSeparatedByString:kOwnLineFeed];
  // An argument with this character could write lines of its own.
  if ([lines count] != ownLineFeeds + 1) return TsEscapedForLog(TsStdString(message));
  std::string text;
  for (NSString* line in lines) text += TsEscapedForLog(TsStdString(line)) + '\n';
  text.pop_back();
  return text;
}

}  // namespace

void TsLogFormat(TsLogFlag flag, const char* file, const char* function, int line, NSString* format, ...) {
  const NSUInteger lineFeeds = [[format componentsSeparatedByString:@"\n"] count] - 1;
  NSString* marked = [format stringByReplacingOccurrencesOfString:@"\n" withString:kOwnLineFeed];
  va_list arguments;
  va_start(arguments, format);
  const auto message = Adopt([[NSString alloc] initWithFormat:marked arguments:arguments]);
  va_end(arguments);
  const std::string text = Escaped(message, lineFeeds);
  TsLogFacility::Shared().Log(
      {.text = text, .isEscaped = true, .flag = flag, .file = file, .function = function, .line = line});
}
