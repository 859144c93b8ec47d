#pragma once

#include <AppKit/AppKit.h>

#define CHECK_OLD_CONTACTS API_DEPRECATED("", macos(10.2, 10.11))

extern "C" {
extern NSString* const kABFirstNameProperty CHECK_OLD_CONTACTS;
extern NSString* const kABMiddleNameProperty CHECK_OLD_CONTACTS;
extern NSString* const kABTitleProperty CHECK_OLD_CONTACTS;
extern NSString* const kABSuffixProperty CHECK_OLD_CONTACTS;
extern NSString* const kABLastNameProperty CHECK_OLD_CONTACTS;
extern NSString* const kABOrganizationProperty CHECK_OLD_CONTACTS;
extern NSString* const kABEmailProperty CHECK_OLD_CONTACTS;
extern NSString* const kABGroupNameProperty CHECK_OLD_CONTACTS;
extern NSString* const kABPersonFlags CHECK_OLD_CONTACTS;
}
enum : NSInteger {
  kABShowAsMask = 7,
  kABShowAsPerson = 0,
  kABShowAsCompany = 1,
  kABNameOrderingMask = 56,
  kABDefaultNameOrdering = 0,
  kABFirstNameFirst = 32,
  kABLastNameFirst = 16,
};

CHECK_OLD_CONTACTS
@interface ABRecord : NSObject
- (id)valueForProperty:(NSString*)property;
@property(readonly, copy) NSString* uniqueId;
@end
CHECK_OLD_CONTACTS
@interface ABPerson : ABRecord
@end
CHECK_OLD_CONTACTS
@interface ABGroup : ABRecord
- (NSArray*)members;
- (NSArray*)subgroups;
@end
CHECK_OLD_CONTACTS
@interface ABMultiValue : NSObject
- (NSUInteger)count;
- (id)valueAtIndex:(NSUInteger)index;
- (NSUInteger)indexForIdentifier:(NSString*)identifier;
- (NSString*)primaryIdentifier;
@end
CHECK_OLD_CONTACTS
@interface ABAddressBook : NSObject
+ (ABAddressBook*)sharedAddressBook;
- (NSArray*)people;
- (NSArray*)groups;
- (ABRecord*)recordForUniqueId:(NSString*)uniqueId;
- (NSInteger)defaultNameOrdering;
@end
CHECK_OLD_CONTACTS
@interface ABPeoplePickerView : NSView
- (void)addProperty:(NSString*)property;
@property(copy) NSString* displayedProperty;
@property BOOL allowsGroupSelection;
@property BOOL allowsMultipleSelection;
@property(assign) id target;
@property SEL nameDoubleAction;
@property SEL groupDoubleAction;
- (NSArray*)selectedRecords;
- (NSArray*)selectedGroups;
- (NSArray*)selectedValues;
- (void)editInAddressBook:(id)sender;
- (void)selectInAddressBook:(id)sender;
@end
