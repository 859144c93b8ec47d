#import "Extensions/NSString+TsPath.h"

#import <Foundation/Foundation.h>

#include "Utilities/TsString.h"

static BOOL IsUnreserved(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
         c == '_' || c == '~';
}

@implementation NSString (TsPath)

- (BOOL)ts_isZipPath {
  return [[[self pathExtension] lowercaseString] isEqualToString:@"zip"];
}

- (BOOL)ts_isWebImagePath {
  return [@[ @"png", @"jpg", @"jpeg", @"gif" ] containsObject:[[self pathExtension] lowercaseString]];
}

- (NSString*)ts_makeUniquePath {
  NSFileManager* files = [NSFileManager defaultManager];
  NSString* unique = self;
  for (int number = 2; [files fileExistsAtPath:unique]; ++number) {
    NSString* numbered = [NSString stringWithFormat:@"%@ %d", [self stringByDeletingPathExtension], number];
    NSString* extension = [self pathExtension];
    unique = [extension length] > 0 ? [numbered stringByAppendingPathExtension:extension] : numbered;
  }
  return unique;
}

- (NSString*)ts_escapeForURL {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string escaped;
  for (const char c : TsStdString(self)) {
    if (IsUnreserved(c)) {
      escaped += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      escaped.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
  }
  return TsNSString(escaped);
}

@end
