#pragma once

#include "Base/Ref.h"
#import "Platform/AddressBook.h"

@class NSArray;

// A recipient of a mail. The address is not validated.
@interface TsRecipient : NSObject {
  Ref<NSString> _address;
  Ref<NSString> _name;
}

@property(nonatomic, copy) NSString* address;
// Empty for none.
@property(nonatomic, copy) NSString* name;

+ (instancetype)recipient:(NSString*)address name:(NSString*)name;

// nil unless the address is one of the person's. Companies get their organization as name; names of persons are in the
// order that the person or else the address book asks for.
+ (instancetype)recipient:(NSString*)address person:(ABPerson*)person;

// Every member by its primary address, then the members of the subgroups, duplicates included. A group within itself is
// not entered again.
+ (NSArray*)recipientsFromGroup:(ABGroup*)group;

// As in a header: `"Ann" <ann@example.org>, <bob@example.org>`.
+ (NSString*)toString:(NSArray*)recipients;
// Parses such a header: every comma separates, and quotes stay in the name.
+ (NSArray*)fromString:(NSString*)string;

// One item of such a header. A name with "<" in it comes without the address.
- (NSString*)stringForEmail;

@end

// {"name", "email"} of each recipient of the first group with that name, without "name" where that is empty; nil if no
// group has the name.
[[nodiscard]] NSArray* TsRecipientsForGroupName(NSString* groupName);
