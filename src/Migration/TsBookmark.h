#pragma once

#import "Migration/TsManagedObject.h"

@class TsAccount;

@interface TsBookmark : TsManagedObject

@property(nonatomic, copy) NSNumber* order;
@property(nonatomic, copy) NSString* title;
@property(nonatomic, copy) NSString* url;
@property(nonatomic, readonly) TsAccount* account;

// What exportTo: writes, without making an object of what only passes through.
+ (void)exportObject:(const TsStoreObject&)bookmark of:(const TsStoreFile&)store to:(TsExportText&)json;

@end
