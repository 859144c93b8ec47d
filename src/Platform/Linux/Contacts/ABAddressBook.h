#pragma once

// GNUstep's Addresses framework under the names of Cocoa's address book, with the parts that the framework lacks.

#import <AppKit/AppKit.h>

#include <vector>

#include "Base/Ref.h"

// The framework's headers are C.
extern "C" {
#import <AddressBook/AddressBook.h>
}

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

// Selects groups, people and addresses of the address book: groups beside a list with a row for each e-mail address.
// GNUstep has no such view.
@interface ABPeoplePickerView : NSView {
  struct Row {
    Ref<ADPerson> person;
    Ref<NSString> name;
    Ref<NSString> value;
  };
  Ref<NSTableView> _groupTable;
  Ref<NSTableView> _nameTable;
  Ref<NSArray> _groups;
  std::vector<Row> _rows;
  Ref<NSString> _property;
  id _target;
  SEL _groupDoubleAction;
  SEL _nameDoubleAction;
  BOOL _allowsGroupSelection;
}

// Not retained.
@property(nonatomic, assign) id target;
@property(nonatomic) SEL groupDoubleAction;
@property(nonatomic) SEL nameDoubleAction;
@property(nonatomic) BOOL allowsGroupSelection;

- (void)setAllowsMultipleSelection:(BOOL)allows;

// One property is shown beside the names.
- (void)addProperty:(NSString*)property;
- (void)setDisplayedProperty:(NSString*)property;

// In the displayed order.
- (NSArray*)selectedValues;
- (NSArray*)selectedRecords;
- (NSArray*)selectedGroups;

// Opens the selected person in the application for contacts.
- (void)editInAddressBook:(id)sender;

@end
