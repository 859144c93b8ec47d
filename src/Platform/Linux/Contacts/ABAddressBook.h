#pragma once

// GNUstep's Addresses framework, which has Cocoa's address book under other names, and what it leaves out.

#import <Foundation/Foundation.h>

// Its headers know no C++.
extern "C" {
#import <AddressBook/AddressBook.h>
}

#import "Platform/Linux/Contacts/ABPeoplePickerView.h"

// Of a person. The framework has no properties that are numbers: the value is a text, which has an integerValue too.
extern NSString* const kABPersonFlags;

constexpr NSInteger kABShowAsMask = 007;
constexpr NSInteger kABShowAsPerson = 0;
constexpr NSInteger kABShowAsCompany = 1;
constexpr NSInteger kABNameOrderingMask = 070;
constexpr NSInteger kABDefaultNameOrdering = 0;
constexpr NSInteger kABLastNameFirst = 020;
constexpr NSInteger kABFirstNameFirst = 040;

@interface ADAddressBook (NameOrdering)

// What the framework's applications have for it among the user's defaults.
- (NSInteger)defaultNameOrdering;

@end
