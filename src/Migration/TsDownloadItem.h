#pragma once

#import <AppKit/NSImage.h>

#import "Migration/TsManagedObject.h"

@class TsAccount;

@interface TsDownloadItem : TsManagedObject

@property(nonatomic, readonly) TsAccount* account;

// Whether all expected bytes have been received.
@property(nonatomic, readonly) BOOL isFinished;

// For display. They follow from the stored values, and change with them.
@property(nonatomic, readonly) NSString* name;
@property(nonatomic, readonly) NSImage* icon;
@property(nonatomic, readonly) NSString* sizeHumanReadable;
@property(nonatomic, readonly) NSNumber* progressInPercents;  // 0 to 100
@property(nonatomic, readonly) NSURL* previewItemURL;

@end

@interface TsDownloadItem (Attributes)
@property(nonatomic, copy) NSString* path;
@property(nonatomic, copy) NSDate* createdAt;
@property(nonatomic, copy) NSNumber* bytesReceived;
@property(nonatomic, copy) NSNumber* bytesExpected;  // nil or 0 while unknown
@end
