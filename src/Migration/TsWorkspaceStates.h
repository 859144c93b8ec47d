#pragma once

#import <AppKit/NSImage.h>
#import <Foundation/Foundation.h>

#include <cstddef>

#include "Base/Ref.h"
#import "Migration/TsManagedObject.h"

// One of the Google applications, of one account. Its text form is "Ts_<type>_<account>", as in
// "Ts_Calendar_ann@example.org". Immutable; any thread, but for the image.
@interface TsGoogleAppIdentifier : NSObject <NSCopying> {
 @private
  Ref<NSString> _accountIdentifier;
  std::size_t _type;
}

@property(nonatomic, readonly) NSString* accountIdentifier;  // the e-mail address
@property(nonatomic, readonly) NSString* type;               // "Gmail", "GoogleInbox", "Calendar" or "Contacts"
@property(nonatomic, readonly) NSString* typeLabel;          // as the user reads it; empty without a translation
@property(nonatomic, readonly) NSImage* defaultIcon;         // nil when the application has none

@property(nonatomic, readonly) BOOL isGmail;
@property(nonatomic, readonly) BOOL isGoogleInbox;
@property(nonatomic, readonly) BOOL isCalendar;
@property(nonatomic, readonly) BOOL isContacts;

+ (TsGoogleAppIdentifier*)gmailIdentifierWithAccountIdentifier:(NSString*)accountIdentifier;
+ (TsGoogleAppIdentifier*)googleInboxIdentifierWithAccountIdentifier:(NSString*)accountIdentifier;
+ (TsGoogleAppIdentifier*)calendarIdentifierWithAccountIdentifier:(NSString*)accountIdentifier;
+ (TsGoogleAppIdentifier*)contactsIdentifierWithAccountIdentifier:(NSString*)accountIdentifier;

// In the order Gmail, Google Inbox, Calendar, Contacts.
+ (NSArray*)allWithAccountIdentifier:(NSString*)accountIdentifier;

// Raises "UnknownIdentifier", with the text as its reason, when it is no such text.
+ (TsGoogleAppIdentifier*)identifierWithDescription:(NSString*)description;

- (TsGoogleAppIdentifier*)toGmailIdentifier;
- (TsGoogleAppIdentifier*)toGoogleInboxIdentifier;
- (TsGoogleAppIdentifier*)toCalendarIdentifier;
- (TsGoogleAppIdentifier*)toContactsIdentifier;

- (BOOL)isEqualToIdentifier:(TsGoogleAppIdentifier*)identifier;

@end

@class TsWorkspaceState;

// An application that was open in a workspace, and where in it the user was.
@interface TsGoogleAppState : TsManagedObject

@property(nonatomic, readonly) TsWorkspaceState* workspaceState;

@end

@interface TsGoogleAppState (Attributes)
@property(nonatomic, copy) NSString* identifier;  // the text form of a TsGoogleAppIdentifier
@property(nonatomic, copy) NSString* url;
@end

// A window of the previous version with its tabs.
@interface TsWorkspaceState : TsManagedObject

@property(nonatomic, readonly) NSOrderedSet* appStates;

// As the last one.
- (TsGoogleAppState*)addAppStateWithIdentifier:(TsGoogleAppIdentifier*)identifier;

@end

@interface TsWorkspaceState (Attributes)
@property(nonatomic, copy) NSNumber* active;  // a boolean
@property(nonatomic, copy) NSDate* lastUpdatedAt;
@end

// The workspaces of the previous version. A failure to write is logged too. One thread.
@interface TsWorkspaceStates : TsPersistence

// The most recently updated comes first.
- (NSArray*)all;

- (TsWorkspaceState*)insertNewWorkspaceState;
- (void)deleteWorkspaceState:(TsWorkspaceState*)state;

// Makes and saves one if the store has none.
- (TsWorkspaceState*)activeWorkspaceState;

// No other one is active then.
- (void)setActiveWorkspaceState:(TsWorkspaceState*)state;

// With several matches, the one in the active workspace, or else in the most recently updated one; nil if missing.
- (TsGoogleAppState*)findFirstGoogleAppStateByAppIdentifier:(TsGoogleAppIdentifier*)identifier;

- (void)deleteGoogleAppState:(TsGoogleAppState*)state;

// Writes all changes to the file, or forgets them when that fails.
- (void)store:(id)sender;

@end
