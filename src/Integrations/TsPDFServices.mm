#import "Integrations/TsPDFServices.h"

#import <Foundation/Foundation.h>

#include <filesystem>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Files.h"
#include "Platform/StandardDirectories.h"

namespace platform = tessaro::platform;

static NSString* const kEntry = @"Mail PDF with Tessaro";
static NSString* const kPreviousVersion = @"Tessaro 3.app";

static bool LeadsToOurselves(const std::filesystem::path& target) {
  NSString* path = TsNSString(target.native());
  NSString* identifier = [[NSBundle bundleWithPath:path] bundleIdentifier];
  if (identifier != nil && [identifier isEqualToString:[[NSBundle mainBundle] bundleIdentifier]]) return true;
  return [[path lastPathComponent] isEqualToString:kPreviousVersion];
}

static void Delete(NSString* path) {
  NSError* error = nil;
  if ([[NSFileManager defaultManager] removeItemAtPath:path error:&error]) {
    TsLogInfo(@"Deleted %@", path);
  } else {
    TsLogWarning(@"Couldn't delete %@ because of %@", path, error);
  }
}

@implementation TsPDFServices

+ (instancetype)sharedInstance {
  static Forever<Ref<TsPDFServices>> instance(Adopt([[self alloc] init]));
  return *instance;
}

- (NSString*)pdfServicesPath {
  return TsNSString((platform::HomeDirectory() / "Library" / "PDF Services").native());
}

- (NSArray*)items {
  return [[NSFileManager defaultManager] contentsOfDirectoryAtPath:[self pdfServicesPath] error:nullptr];
}

- (void)removeBookmarksToOurselves {
  for (NSString* name in [self items]) {
    NSString* path = [[self pdfServicesPath] stringByAppendingPathComponent:name];
    const std::filesystem::path target = platform::ResolveAlias(TsStdString(path));
    if (!target.empty() && LeadsToOurselves(target)) Delete(path);
  }
}

- (void)makeFolder {
  NSFileManager* files = [NSFileManager defaultManager];
  NSString* folder = [self pdfServicesPath];
  if ([files fileExistsAtPath:folder]) return;
  if ([files createDirectoryAtPath:folder withIntermediateDirectories:YES attributes:nil error:nullptr]) {
    TsLogInfo(@"Created %@", folder);
  }
}

// -fileExistsAtPath: would follow an alias, whose target may be gone.
- (BOOL)removeEntry:(NSString*)entry {
  NSFileManager* files = [NSFileManager defaultManager];
  if ([files attributesOfItemAtPath:entry error:nullptr] == nil) return YES;
  NSError* error = nil;
  if ([files removeItemAtPath:entry error:&error]) return YES;
  TsLogError(@"While removing '%@'. %@", entry, error);
  return NO;
}

- (void)install {
  NSBundle* bundle = [NSBundle mainBundle];
  if ([bundle bundleIdentifier] == nil) return;
  [self removeBookmarksToOurselves];
  [self makeFolder];
  if (![[NSFileManager defaultManager] fileExistsAtPath:[bundle bundlePath]]) {
    TsLogError(@"While creating bookmarkData for '%@'. %@", [bundle bundlePath], @"There is no such bundle");
    return;
  }
  NSString* entry = [[self pdfServicesPath] stringByAppendingPathComponent:kEntry];
  if (![self removeEntry:entry]) return;
  const auto written = platform::WriteAlias(TsStdString(entry), TsStdString([bundle bundlePath]));
  if (!written) return TsLogError(@"While creating '%@'. %s", entry, written.error().message.c_str());
  TsLogInfo(@"Created '%@'.", entry);
}

- (void)uninstall {
  [self removeBookmarksToOurselves];
  NSArray* left = [self items];
  if (left != nil && [left count] == 0) Delete([self pdfServicesPath]);
}

@end
