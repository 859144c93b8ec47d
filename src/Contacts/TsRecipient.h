#pragma once

#include "Base/Ref.h"
#import "Platform/AddressBook.h"

@class NSArray;

// Somebody whom a mail goes to. Nothing tests the address.
@interface TsRecipient : NSObject {
  Ref<NSString> _address;
  Ref<NSString> _name;
}

@property(nonatomic, copy) NSString* address;
// Empty for none.
@property(nonatomic, copy) NSString* name;

+ (instancetype)recipient:(NSString*)address name:(NSString*)name;

// nil unless the address is one of the person's. Companies go by their organization; in the names of persons the order
// is the person's own, or the address book's.
+ (instancetype)recipient:(NSString*)address person:(ABPerson*)person;

// Every member by its primary address, and then those of the subgroups. Who is in it twice comes twice; a group within
// itself is not entered again.
+ (NSArray*)recipientsFromGroup:(ABGroup*)group;

// As in a header: `"Ann" <ann@example.org>, <bob@example.org>`.
+ (NSString*)toString:(NSArray*)recipients;
// The other way round; every comma is a separator, and quotes stay in the name.
+ (NSArray*)fromString:(NSString*)string;

// One item of such a header. A name with "<" in it comes without the address.
- (NSString*)stringForEmail;

@end

// {"name", "email"} of each recipient of the first group with that name, without "name" where there is none; nil when
// there is no such group.
[[nodiscard]] NSArray* TsRecipientsForGroupName(NSString* groupName);
