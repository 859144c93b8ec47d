#pragma once

// GNUstep's Addresses framework under the names of Cocoa's address book, with the parts that the framework lacks.

#import <Foundation/Foundation.h>

// The framework's headers are C.
extern "C" {
#import <AddressBook/AddressBook.h>
}

#import "Platform/Linux/Contacts/ABPeoplePickerView.h"

// A person's flags. The framework has no number properties: the value is a text, which has -integerValue too.
extern NSString* const kABPersonFlags;

constexpr NSInteger kABShowAsMask = 007;
constexpr NSInteger kABShowAsPerson = 0;
constexpr NSInteger kABShowAsCompany = 1;
constexpr NSInteger kABNameOrderingMask = 070;
constexpr NSInteger kABDefaultNameOrdering = 0;
constexpr NSInteger kABLastNameFirst = 020;
constexpr NSInteger kABFirstNameFirst = 040;

@interface ADAddressBook (NameOrdering)

// The user default of the framework's applications.
- (NSInteger)defaultNameOrdering;

@end
