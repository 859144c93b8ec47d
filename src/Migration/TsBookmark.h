#pragma once

#import "Migration/TsManagedObject.h"

@class TsAccount;

@interface TsBookmark : TsManagedObject

@property(nonatomic, copy) NSNumber* order;
@property(nonatomic, copy) NSString* title;
@property(nonatomic, copy) NSString* url;
@property(nonatomic, readonly) TsAccount* account;

@end
