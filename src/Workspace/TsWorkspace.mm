#include "Workspace/TsWorkspace.h"

#include <vector>

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Applications.h"
#include "Platform/Cocoa.h"
#include "Platform/WindowServer.h"

namespace platform = tessaro::platform;

namespace {

// A handler that stands for the system itself.
NSString* const kSystemLibrary = @"com.apple.system-library";

// A name from outside must not lead out of the folder.
NSString* TsPathForImage(NSString* directory, NSString* name) {
  NSString* file =
      [[[name componentsSeparatedByString:@"/"] componentsJoinedByString:@"-"] stringByAppendingString:@".png"];
  return [directory stringByAppendingPathComponent:file];
}

bool TsWriteImage(const std::vector<std::uint8_t>& png, NSString* path) {
  if (png.empty()) return false;
  return [[NSData dataWithBytes:png.data() length:png.size()] writeToFile:path atomically:NO];
}

// nil when the folder exists afterwards.
NSError* MakeDirectory(NSString* directory) {
  NSFileManager* files = [NSFileManager defaultManager];
  if ([directory length] == 0 || [files fileExistsAtPath:directory]) return nil;
  NSError* error = nil;
  const BOOL isMade = [files createDirectoryAtPath:directory
                       withIntermediateDirectories:YES
                                        attributes:nil
                                             error:&error];
  if (isMade) return nil;
  return error != nil ? error : [NSError errorWithDomain:NSCocoaErrorDomain code:NSFileWriteUnknownError userInfo:nil];
}

void PrepareImageDirectory(NSString* directory) {
  if (NSError* error = MakeDirectory(directory)) {
    TsLogWarning(@"Couldn't create directory at path %@ because of %@", directory, error);
  }
}

NSString* ImageOf(NSString* identifier, NSInteger size, NSString* directory) {
  if ([directory length] == 0) return @"";
  NSString* path = TsPathForImage(directory, identifier);
  if ([[NSFileManager defaultManager] fileExistsAtPath:path]) return path;
  if (!TsWriteImage(platform::IconOfApplication(TsStdString(identifier), static_cast<int>(size)), path)) {
    TsLogWarning(@"Couldn't write icon file %@", path);
  }
  return path;
}

NSString* WriteIcon(const std::vector<std::uint8_t>& png, NSString* name, NSString* directory) {
  if (NSError* error = MakeDirectory(directory)) {
    TsLogWarning(@"Couldn't create target dir for target dir %@ because of %@", directory, error);
  }
  NSString* path = TsPathForImage(directory, name);
  if (TsWriteImage(png, path)) return path;
  TsLogWarning(@"Couldn't write icon file %@", path);
  return nil;
}

bool IsOurs(NSString* identifier) {
  NSString* ours = [[NSBundle mainBundle] bundleIdentifier];
  return ours != nil && [[identifier lowercaseString] isEqualToString:[ours lowercaseString]];
}

NSString* TsUTIForFileExtension(NSString* extension) {
  return TsNSString(platform::ContentTypeOfExtension(TsStdString(extension)));
}

NSString* TsDefaultAppForUTI(NSString* type) {
  return TsNSString(platform::DefaultHandlerOfContentType(TsStdString(type)));
}

NSString* WithoutDot(NSString* extension) {
  return [extension hasPrefix:@"."] ? [extension substringFromIndex:1] : extension;
}

}  // namespace

NSArray* TsAppsFromBundleIds(NSArray* identifiers, NSString* standard, NSInteger imageSize, NSString* directory) {
  NSMutableArray* entries = [NSMutableArray array];
  for (NSString* identifier in identifiers) {
    if ([identifier isEqualToString:kSystemLibrary]) continue;
    const auto application = platform::FindApplication(TsStdString(identifier));
    if (!application || application->path.empty()) continue;
    [entries addObject:@{
      @"path" : TsNSString(application->path),
      @"name" : TsNSString(application->name),
      @"bundle-id" : identifier,
      @"default?" : @(bool([identifier isEqualToString:standard])),
      @"our-entry?" : @(IsOurs(identifier)),
      @"image-path" : ImageOf(identifier, imageSize, directory),
    }];
  }
  return [NSArray arrayWithArray:entries];
}

NSArray* TsApplicationsForFileExtension(NSString* extension, NSInteger imageSize, NSString* directory) {
  NSString* plain = [WithoutDot(extension) lowercaseString];
  TsLogInfo(@"applicationsForFileExtension: extension: %@, imageSize: %lu, targetDir: %@", plain,
            static_cast<unsigned long>(imageSize), directory);
  PrepareImageDirectory(directory);
  NSString* type = TsUTIForFileExtension(plain);
  NSArray* handlers = TsNSArray(platform::HandlersOfContentType(TsStdString(type)));
  return TsAppsFromBundleIds(handlers, TsDefaultAppForUTI(type), imageSize, directory);
}

NSArray* TsApplicationsForURLScheme(NSString* scheme, NSInteger imageSize, NSString* directory) {
  TsLogInfo(@"applicationsForScheme scheme %@, imageSize: %lu, targetDir: %@", scheme,
            static_cast<unsigned long>(imageSize), directory);
  PrepareImageDirectory(directory);
  NSArray* handlers = TsNSArray(platform::HandlersOfScheme(TsStdString(scheme)));
  return TsAppsFromBundleIds(handlers, TsGetDefaultApplicationForURLScheme(scheme), imageSize, directory);
}

NSString* TsGetDefaultApplicationForURLScheme(NSString* scheme) {
  const std::string identifier = platform::DefaultHandlerOfScheme(TsStdString(scheme));
  return identifier.empty() ? nil : TsNSString(identifier);
}

bool TsSetDefaultApplicationForURLScheme(NSString* scheme, NSString* identifier) {
  const auto set = platform::SetDefaultHandlerOfScheme(TsStdString(scheme), TsStdString(identifier));
  if (!set) TsLogWarning(@"Couldn't make %@ open %@ links: %s", identifier, scheme, set.error().message.c_str());
  return set.has_value();
}

bool TsIsApplicationInstalled(NSString* identifier) {
  return platform::FindApplication(TsStdString(identifier)).has_value();
}

NSString* TsApplicationNameForBundleId(NSString* identifier) {
  const auto application = platform::FindApplication(TsStdString(identifier));
  return application ? TsNSString(application->name) : nil;
}

NSString* TsGetIconForPathExtension(NSString* extension, NSInteger size, NSString* directory) {
  const std::string type = TsStdString(TsUTIForFileExtension(extension));
  return WriteIcon(platform::IconOfContentType(type, static_cast<int>(size)), extension, directory);
}

NSString* TsGetApplicationIconForBundleId(NSString* identifier, NSInteger size, NSString* directory) {
  return WriteIcon(platform::IconOfApplication(TsStdString(identifier), static_cast<int>(size)), identifier, directory);
}

bool TsOpenFile(NSString* path, NSString* applicationPath, bool deactivate) {
  const auto opened = platform::OpenFile(TsStdString(path), TsStdString(applicationPath));
  if (!opened) TsLogWarning(@"Couldn't open %@: %s", path, opened.error().message.c_str());
  if (!opened) return false;
  if (deactivate && platform::IsWindowServerAvailable()) [NSApp deactivate];
  return true;
}

bool TsOpenInfoForFile(NSString* path) {
  const auto shown = platform::ShowFileInformation(TsStdString(path));
  if (!shown) TsLogWarning(@"Couldn't show information about %@: %s", path, shown.error().message.c_str());
  return shown.has_value();
}
