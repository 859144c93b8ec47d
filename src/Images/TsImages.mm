#include "Images/TsImages.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <string>
#include <string_view>

#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#import "Extensions/NSString+TsPath.h"
#include "Images/PictureFiles.h"
#include "Platform/BackgroundQueue.h"
#include "Platform/Cocoa.h"
#include "Platform/FileWriting.h"
#include "Platform/ImageScaling.h"
#include "Platform/MainQueue.h"
#include "Platform/Previews.h"

namespace platform = tessaro::platform;

namespace {

constexpr int kLargestPreview = 8192;

// Pasteboard types whose data are image files that are kept, and those first that lose nothing.
struct ImageType {
  NSString* type;
  NSString* extension;
};
const ImageType kImageTypes[] = {
    {@"public.png", @"png"},  {@"image/png", @"png"},  {@"public.gif", @"gif"}, {@"image/gif", @"gif"},
    {@"public.jpeg", @"jpg"}, {@"image/jpeg", @"jpg"}, {@"public.jpg", @"jpg"},
};

// FNV-1a: files of one name in several folders have several previews.
std::string Fingerprint(std::string_view text) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  char digits[17];
  std::snprintf(digits, sizeof digits, "%016" PRIx64, hash);
  return digits;
}

NSString* PreviewPath(NSString* path, int size, NSString* folder) {
  NSString* absolute = [path isAbsolutePath] ? path
                                             : [[[NSFileManager defaultManager] currentDirectoryPath]
                                                   stringByAppendingPathComponent:path];
  const std::string fingerprint = Fingerprint(TsStdString([absolute stringByStandardizingPath]));
  NSString* name = [NSString stringWithFormat:@"%@-%s-%d.png", [absolute lastPathComponent], fingerprint.c_str(), size];
  return [folder stringByAppendingPathComponent:name];
}

// nil, and a line in the log, when there is none.
NSString* PathOf(const platform::WrittenPicture& written, NSString* what, NSString* path) {
  if (!written.path.empty()) return TsNSString(written.path);
  TsLogWarning(@"Couldn't %@ %@: %@", what, path, TsNSString(written.failure));
  return nil;
}

NSString* CopiedImageFile(NSPasteboard* pasteboard) {
  for (NSPasteboardItem* item in [pasteboard pasteboardItems]) {
    NSString* path = [[NSURL URLWithString:[item stringForType:@"public.file-url"]] path];
    if ([path ts_isWebImagePath]) return path;
  }
  return nil;
}

struct ImageData {
  NSData* contents = nil;
  NSString* extension = @"png";
};

ImageData ImageDataOf(NSPasteboard* pasteboard) {
  for (const ImageType& each : kImageTypes) {
    NSData* contents = [pasteboard dataForType:each.type];
    if ([contents length] > 0) return {contents, each.extension};
  }
  if (![NSImage canInitWithPasteboard:pasteboard]) return {};
  auto image = Adopt([[NSImage alloc] initWithPasteboard:pasteboard]);
  return {[image TIFFRepresentation]};
}

}  // namespace

NSString* TsScaleImage(NSString* path, NSString* target, int maxWidth, int maxHeight) {
  return PathOf(platform::ScaleImage(TsStdString(path), TsStdString(target), maxWidth, maxHeight), @"scale", path);
}

void TsGeneratePreview(NSString* path, int size, NSString* folder, const TsCompletion& completion) {
  const bool isPossible = size > 0 && [folder length] > 0 && TsMakeFolder(folder);
  if (!isPossible) return platform::MainQueue::Shared().Post([completion] { completion(nil); });
  const int pixels = std::min(size, kLargestPreview);
  const std::string target = TsStdString(PreviewPath(path, pixels, folder));
  platform::BackgroundQueue::Shared().Post([source = TsStdString(path), pixels, target, completion] {
    const auto written = platform::WritePreview(source, pixels, target);
    platform::MainQueue::Shared().Post(
        [source, written, completion] { completion(PathOf(written, @"show", TsNSString(source))); });
  });
}

NSString* TsImageFromPasteboard(NSPasteboard* pasteboard, NSString* folder) {
  if ([folder length] == 0 || !TsMakeFolder(folder)) return nil;
  if (NSString* file = CopiedImageFile(pasteboard)) return TsScaleImage(file, folder, 0, 0);
  const ImageData image = ImageDataOf(pasteboard);
  if ([image.contents length] == 0) {
    TsLogInfo(@"There is no image on the pasteboard");
    return nil;
  }
  const TsTemporaryPicture file(TsTemporaryPicturePath());
  const std::string_view bytes(static_cast<const char*>([image.contents bytes]), [image.contents length]);
  if (const std::error_code error = platform::ReplaceFile(file.path(), bytes)) {
    TsLogWarning(@"Couldn't write %s: %s", file.path().c_str(), error.message().c_str());
    return nil;
  }
  NSString* name = [@"Pasted Image" stringByAppendingPathExtension:image.extension];
  return TsScaleImage(TsNSString(file.path()), [[folder stringByAppendingPathComponent:name] ts_makeUniquePath], 0, 0);
}
