#include "Images/TsImages.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#import "Extensions/NSString+TsPath.h"
#include "Platform/Files.h"
#include "Platform/MainQueue.h"
#include "Platform/Pictures.h"
#include "Platform/PreviewPanel.h"
#include "Platform/WindowServer.h"

namespace platform = tessaro::platform;

namespace {

constexpr int kLargestPreview = 8192;

// Pasteboard types whose data are kept as they are; lossless formats first.
struct ImageType {
  NSString* type;
  NSString* extension;
};
const ImageType kImageTypes[] = {
    {@"public.png", @"png"},  {@"image/png", @"png"},  {@"public.gif", @"gif"}, {@"image/gif", @"gif"},
    {@"public.jpeg", @"jpg"}, {@"image/jpeg", @"jpg"}, {@"public.jpg", @"jpg"},
};

// FNV-1a. Tells files of one name in several folders apart.
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

// nil, and a warning, for a failure.
NSString* PathOf(const Result<std::string>& written, NSString* verb, NSString* path) {
  if (written) return TsNSString(*written);
  TsLogWarning(@"Couldn't %@ %@: %s", verb, path, written.error().message.c_str());
  return nil;
}

// nil for a URL that names no file of this machine.
NSString* PathOfFileURL(NSString* text) {
  NSURL* url = text != nil ? [NSURL URLWithString:text] : nil;
  NSString* host = [url host];
  const bool isLocal = [host length] == 0 || [host isEqualToString:@"localhost"];
  return [url isFileURL] && isLocal && [[url path] isAbsolutePath] ? [url path] : nil;
}

NSString* CopiedImageFile(NSPasteboard* pasteboard) {
  for (NSPasteboardItem* item in [pasteboard pasteboardItems]) {
    NSString* path = PathOfFileURL([item stringForType:@"public.file-url"]);
    if (path == nil) continue;
    const bool isImage = [path ts_isWebImagePath] ||
                         [[NSImage imageUnfilteredFileTypes] containsObject:[[path pathExtension] lowercaseString]];
    if (isImage) return path;
  }
  return nil;
}

struct ImageData {
  NSData* contents = nil;
  NSString* extension = @"png";  // of the file that is written
};

// As it is on the pasteboard: this process decodes nothing that comes from outside.
ImageData ImageDataOf(NSPasteboard* pasteboard) {
  for (const ImageType& each : kImageTypes) {
    NSData* contents = [pasteboard dataForType:each.type];
    if ([contents length] > 0) return {contents, each.extension};
  }
  NSString* type = [pasteboard availableTypeFromArray:[NSImage imageUnfilteredPasteboardTypes]];
  return {type != nil ? [pasteboard dataForType:type] : nil};
}

}  // namespace

NSString* TsScaleImage(NSString* path, NSString* target, int maxWidth, int maxHeight) {
  return PathOf(platform::ScaleImage({TsStdString(path), TsStdString(target), maxWidth, maxHeight}), @"scale", path);
}

void TsGeneratePreview(NSString* path, int size, NSString* folder, const TsCompletion& completion) {
  const bool isPossible = size > 0 && [folder length] > 0 && TsMakeFolder(folder);
  if (!isPossible) return platform::MainQueue::Shared().Post([completion] { completion(nil); });
  const int pixels = std::min(size, kLargestPreview);
  const std::string target = TsStdString(PreviewPath(path, pixels, folder));
  platform::WritePreview(TsStdString(path), pixels, target,
                         [source = Retain(path), completion](const Result<std::string>& written) {
                           completion(PathOf(written, @"show", source));
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
  const platform::TemporaryFile file("");
  const std::string_view bytes(static_cast<const char*>([image.contents bytes]), [image.contents length]);
  if (const auto written = platform::ReplaceTransientFile(file.path(), bytes); !written) {
    TsLogWarning(@"Couldn't write %s: %s", file.path().c_str(), written.error().message.c_str());
    return nil;
  }
  NSString* name = [@"Pasted Image" stringByAppendingPathExtension:image.extension];
  return TsScaleImage(TsNSString(file.path()), [[folder stringByAppendingPathComponent:name] ts_makeUniquePath], 0, 0);
}

void TsQuickLook(NSWindow* window, NSArray* paths, NSInteger index, const TsCompletion& closed) {
  const bool isAvailable = platform::IsWindowServerAvailable();
  if (!isAvailable) TsLogWarning(@"quickLook needs a window server, and none is available");
  if (isAvailable && (window == nil || [paths count] == 0)) TsLogError(@"Need a window and files to look at");
  if (!isAvailable || window == nil || [paths count] == 0) {
    return platform::MainQueue::Shared().Post([closed] { closed(nil); });
  }
  std::vector<std::string> files;
  for (NSString* path in paths) files.push_back(TsStdString(path));
  const bool isInside = index >= 0 && static_cast<NSUInteger>(index) < [paths count];
  platform::ShowPreviews(window, files, isInside ? static_cast<std::size_t>(index) : 0,
                         [closed](const std::string& last) { closed(TsNSString(last)); });
}

NSImage* TsImageOfFile(const std::string& path) {
  NSBitmapImageRep* pixels = [NSBitmapImageRep imageRepWithData:[NSData dataWithContentsOfFile:TsNSString(path)]];
  if (pixels == nil) return nil;
  auto image = Adopt([[NSImage alloc]
      initWithSize:NSMakeSize(static_cast<CGFloat>([pixels pixelsWide]), static_cast<CGFloat>([pixels pixelsHigh]))]);
  [pixels setSize:[image size]];
  [image addRepresentation:pixels];
  return image.Autoreleased();
}

bool TsMakeFolder(NSString* folder) {
  NSError* error = nil;
  NSFileManager* files = [NSFileManager defaultManager];
  BOOL isFolder = NO;
  if ([files fileExistsAtPath:folder isDirectory:&isFolder]) {
    if (!isFolder) TsLogWarning(@"%@ is not a folder", folder);
    return isFolder;
  }
  if ([files createDirectoryAtPath:folder withIntermediateDirectories:YES attributes:nil error:&error]) return true;
  TsLogWarning(@"Couldn't create directory at path %@ because of %@", folder, error);
  return false;
}
