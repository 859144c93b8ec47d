#pragma once

#import "Migration/TsAccount.h"
#import "Migration/TsPersistence.h"

// The accounts of the previous version. Whatever can't be read is told by the log and an empty result. Main thread.
@interface TsAccounts : TsPersistence

// The previous version's own file.
+ (TsAccounts*)sharedInstance;

// Without a store when there is none at `path`.
- (instancetype)initWithPath:(NSString*)path;

// By "order", then by "username".
- (NSArray*)all;

// The first one that is not `sender`; nil when there is none.
- (TsAccount*)findByUsername:(NSString*)username;
- (TsAccount*)findByUsername:(NSString*)username sender:(id)sender;
- (TsAccount*)findByNickname:(NSString*)nickname;
- (TsAccount*)findByNickname:(NSString*)nickname sender:(id)sender;

// Of any account.
- (BOOL)hasBookmarks;

// Whether the account is still there.
- (BOOL)isAccessible:(TsAccount*)account;

@end
