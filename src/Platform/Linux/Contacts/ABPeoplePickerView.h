#pragma once

#import <AppKit/AppKit.h>

#include <vector>

#include "Base/Ref.h"

@class ADPerson;

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

- (BOOL)allowsMultipleSelection;
- (void)setAllowsMultipleSelection:(BOOL)allows;

// One property is shown beside the names.
- (void)addProperty:(NSString*)property;
- (void)setDisplayedProperty:(NSString*)property;
- (NSString*)displayedProperty;

// In the displayed order.
- (NSArray*)selectedValues;
- (NSArray*)selectedRecords;
- (NSArray*)selectedGroups;

// Opens the selected person in the application for contacts.
- (void)editInAddressBook:(id)sender;

@end
