#pragma once

#import "Migration/TsManagedObject.h"

@class TsAccount;

@interface TsBookmark : TsManagedObject

@property(nonatomic, copy) NSNumber* order;
@property(nonatomic, copy) NSString* title;
@property(nonatomic, copy) NSString* url;
@property(nonatomic, readonly) TsAccount* account;

// "order", "title", "url".
- (NSDictionary*)dictionaryWithValues;

// The same, without making an object of what only passes through.
+ (Ref<NSDictionary>)newExportOf:(const TsStoreObject&)bookmark in:(const TsStoreFile&)store;

@end
