#import "Migration/TsDownloadItem.h"

#import <AppKit/NSWorkspace.h>
#import <Foundation/NSByteCountFormatter.h>

#include <algorithm>

@implementation TsDownloadItem

+ (NSSet*)keyPathsForValuesAffectingValueForKey:(NSString*)key {
  NSDictionary* sources = @{
    @"isFinished" : @[ @"bytesReceived", @"bytesExpected" ],
    @"progressInPercents" : @[ @"bytesReceived", @"bytesExpected" ],
    @"sizeHumanReadable" : @[ @"bytesExpected" ],
    @"name" : @[ @"path" ],
    @"icon" : @[ @"path" ],
    @"previewItemURL" : @[ @"path" ],
  };
  NSArray* own = [sources objectForKey:key];
  return own != nil ? [NSSet setWithArray:own] : [super keyPathsForValuesAffectingValueForKey:key];
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
