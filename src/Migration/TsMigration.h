#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>

// What the previous major version has left behind for this user. Nothing is cached, nothing is written, and what is
// missing is empty. Main thread.
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

// {"active?", "tabs": [{"email", "app"}]}. Raises "UnknownIdentifier" for a tab of an application nobody knows.
- (NSArray*)workspaces;

// The preferences that are carried over, as they are stored.
- (NSDictionary*)userDefaults;

// All of it, for script, as compact JSON: "has-previous-version?", and "accounts", "workspaces" and "prefs" – or only
// those of the three that are part of the text `selection`, when there is one. Nothing when JSON can't express it.
- (std::optional<std::string>)reportOf:(NSString*)selection;

@end
