#import "Migration/TsDownloadItem.h"

#import <AppKit/NSWorkspace.h>
#import <Foundation/NSByteCountFormatter.h>

#include <algorithm>

namespace {

NSSet* Keys(NSString* first, NSString* second = nil) { return [NSSet setWithObjects:first, second, nil]; }

}  // namespace

@implementation TsDownloadItem

@dynamic path, createdAt, bytesReceived, bytesExpected;

+ (NSSet*)keyPathsForValuesAffectingIsFinished {
  return Keys(@"bytesReceived", @"bytesExpected");
}

+ (NSSet*)keyPathsForValuesAffectingName {
  return Keys(@"path");
}

+ (NSSet*)keyPathsForValuesAffectingIcon {
  return Keys(@"path");
}

+ (NSSet*)keyPathsForValuesAffectingSizeHumanReadable {
  return Keys(@"bytesExpected");
}

+ (NSSet*)keyPathsForValuesAffectingProgressInPercents {
  return Keys(@"bytesReceived", @"bytesExpected");
}

+ (NSSet*)keyPathsForValuesAffectingPreviewItemURL {
  return Keys(@"path");
}

- (void)awakeFromInsert {
  [self setCreatedAt:[NSDate date]];
}

- (TsAccount*)account {
  return [self objectIn:"account"];
}

- (BOOL)isFinished {
  const long long expected = [[self bytesExpected] longLongValue];
  return expected > 0 && [[self bytesReceived] longLongValue] >= expected;
}

- (NSString*)name {
  return [[self path] lastPathComponent];
}

- (NSImage*)icon {
  NSString* path = [self path];
  return path != nil ? [[NSWorkspace sharedWorkspace] iconForFile:path] : nil;
}

- (NSString*)sizeHumanReadable {
  return [NSByteCountFormatter stringFromByteCount:[[self bytesExpected] longLongValue]
                                        countStyle:NSByteCountFormatterCountStyleFile];
}

- (NSNumber*)progressInPercents {
  const double expected = [[self bytesExpected] doubleValue];
  const double share = expected > 0 ? [[self bytesReceived] doubleValue] / expected : 0;
  return [NSNumber numberWithInt:static_cast<int>(std::clamp(share, 0.0, 1.0) * 100)];
}

- (NSURL*)previewItemURL {
  NSString* path = [self path];
  return path != nil ? [NSURL fileURLWithPath:path] : nil;
}

@end
