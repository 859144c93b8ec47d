#pragma once

#import <Foundation/Foundation.h>

#import "Migration/TsAccount.h"

// The accounts of the previous version. Main thread.
@interface TsAccounts : TsPersistence

// The previous version's own file.
+ (TsAccounts*)sharedInstance;

// By "order", then by "username".
- (NSArray*)all;

// The first one that is not `sender`; nil if missing.
- (TsAccount*)findByUsername:(NSString*)username;
- (TsAccount*)findByUsername:(NSString*)username sender:(id)sender;
- (TsAccount*)findByNickname:(NSString*)nickname;
- (TsAccount*)findByNickname:(NSString*)nickname sender:(id)sender;

// Whether any account has one.
- (BOOL)hasBookmarks;

// Whether the account is still there.
- (BOOL)isAccessible:(TsAccount*)account;

@end

// The data of the previous major version. Nothing is cached or written; missing files give empty results. Main thread.
@interface TsMigration : NSObject

- (NSString*)previousVersionAppSupportFolder;
- (NSString*)accountsPath;
- (NSString*)workspaceStatesPath;

// Whether there is a file of accounts; it is not looked into.
- (BOOL)hasPreviousVersion;

// Whether there is an account in it.
- (BOOL)hasAccounts;

// Each with its password in clear, out of the keychain.
- (NSArray*)accountsAsDictionaries;

// {"active?", "tabs": [{"email", "app"}]}. Raises "UnknownIdentifier" for a tab of an unknown application.
- (NSArray*)workspaces;

// The preferences that are carried over, as they are stored.
- (NSDictionary*)userDefaults;

// The whole report: "has-previous-version?", and "accounts", "workspaces" and "prefs", or only those of the three that
// are part of the text `selection`, when there is one.
- (NSDictionary*)reportOf:(NSString*)selection;

@end
