#pragma once

#import <AppKit/NSImage.h>
#import <Foundation/Foundation.h>

#include <cstddef>

#include "Base/Ref.h"

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
