#pragma once

#import "Migration/TsManagedObject.h"

@class TsAccount;

@interface TsSignature : TsManagedObject

@property(nonatomic, copy) NSString* email;
@property(nonatomic, copy) NSString* name;
@property(nonatomic, copy) NSNumber* useByDefault;  // a boolean
@property(nonatomic, readonly) TsAccount* account;

@end
