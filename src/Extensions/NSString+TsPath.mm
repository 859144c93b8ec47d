#import "Extensions/NSString+TsPath.h"

#import <Foundation/Foundation.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "Base/TextPieces.h"
#include "Base/TsString.h"
#include "Platform/Files.h"

namespace {

struct Signature {
  std::size_t offset;
  std::string_view bytes;
};

constexpr std::size_t kMostSignature = 12;

// "avis" is an animated AVIF. WebP shares its first bytes with other RIFF files.
constexpr std::array kWebImages = {
    Signature{0, "\x89PNG\r\n\x1a\n"},
    Signature{0, "\xff\xd8\xff"},
    Signature{0, "GIF87a"},
    Signature{0, "GIF89a"},
    Signature{8, "WEBP"},
    Signature{4, "ftypavif"},
    Signature{4, "ftypavis"},
};

bool Has(std::string_view bytes, const Signature& signature) {
  return bytes.size() >= signature.offset && bytes.substr(signature.offset).starts_with(signature.bytes);
}

}  // namespace

@implementation NSString (TsPath)

- (BOOL)ts_isZipPath {
  return [[[self pathExtension] lowercaseString] isEqualToString:@"zip"];
}

- (BOOL)ts_isWebImagePath {
  using namespace tessaro::platform;
  const std::string bytes = ReadFile(TsStdString(self), kMostSignature, Longer::IsCut).value_or("");
  return std::any_of(kWebImages.begin(), kWebImages.end(),
                     [&bytes](const Signature& each) { return Has(bytes, each); });
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
  return TsNSString(PercentEncoded(TsStdString(self)));
}

@end
