#include <uv.h>

#import <Addresses/ADLocalAddressBook.h>

#include "Contacts/TsAddressBookWindowController.h"
#include "Contacts/TsRecipient.h"
#include "Probe.h"

namespace {

NSArray* Described(NSArray* recipients) {
  NSMutableArray* pairs = [NSMutableArray array];
  for (TsRecipient* recipient in recipients) [pairs addObject:@[ [recipient name], [recipient address] ]];
  return pairs;
}

NSArray* Recipients(NSArray* pairs) {
  NSMutableArray* recipients = [NSMutableArray array];
  for (NSArray* pair in pairs) {
    id name = [pair objectAtIndex:0];
    [recipients addObject:[TsRecipient recipient:[pair objectAtIndex:1] name:name == [NSNull null] ? nil : name]];
  }
  return recipients;
}

// [name, address] of each.
id parse(NSString* text) { return Described([TsRecipient fromString:text]); }

// The header, and each item for itself.
id format(NSArray* pairs) {
  NSArray* recipients = Recipients(pairs);
  return @[ [TsRecipient toString:recipients], [recipients valueForKey:@"stringForEmail"] ];
}

// Nanoseconds of reading a text, and of writing it again; how many recipients it has, and its length then.
id timeText(NSString* text) {
  const std::uint64_t start = uv_hrtime();
  NSArray* recipients = [TsRecipient fromString:text];
  const std::uint64_t parsed = uv_hrtime();
  NSString* written = [TsRecipient toString:recipients];
  const std::uint64_t end = uv_hrtime();
  return @[ @(double(parsed - start)), @(double(end - parsed)), @([recipients count]), @([written length]) ];
}

// ---- Address book

NSString* Location() {
  NSArray* libraries = NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, YES);
  return [[libraries objectAtIndex:0] stringByAppendingPathComponent:@"Addresses"];
}

ABMultiValue* Addresses(NSDictionary* description) {
  auto addresses = Adopt([[ABMutableMultiValue alloc] initWithType:kABMultiStringProperty]);
  for (NSString* address in [description objectForKey:@"emails"]) {
    [addresses addValue:address withLabel:kABEmailWorkLabel];
  }
  return addresses.Autoreleased();
}

ABPerson* NewPerson(NSDictionary* description) {
  NSDictionary* properties = @{
    @"title" : kABTitleProperty,
    @"first" : kABFirstNameProperty,
    @"middle" : kABMiddleNameProperty,
    @"last" : kABLastNameProperty,
    @"suffix" : kABSuffixProperty,
    @"organization" : kABOrganizationProperty,
    @"flags" : kABPersonFlags,
  };
  auto person = Adopt([[ABPerson alloc] init]);
  for (NSString* key in properties) {
    id value = [description objectForKey:key];
    if (value != nil) [person setValue:[value description] forProperty:[properties objectForKey:key]];
  }
  [person setValue:Addresses(description) forProperty:kABEmailProperty];
  return person.Autoreleased();
}

// A new address book of {people: [{title, first, …, emails, flags}], groups: [{name, members, subgroups}]}, whose
// groups name people and groups by their numbers.
bool make(NSDictionary* description) {
  [[NSFileManager defaultManager] createDirectoryAtPath:Location()
                            withIntermediateDirectories:YES
                                             attributes:nil
                                                  error:nullptr];
  [ADLocalAddressBook makeLocalAddressBookAtLocation:Location()];
  ABAddressBook* book = tessaro::platform::SharedAddressBook();
  NSMutableArray* people = [NSMutableArray array];
  for (NSDictionary* each in [description objectForKey:@"people"]) {
    [people addObject:NewPerson(each)];
    [book addRecord:[people lastObject]];
  }
  NSMutableArray* groups = [NSMutableArray array];
  for (NSDictionary* each in [description objectForKey:@"groups"]) {
    auto group = Adopt([[ABGroup alloc] init]);
    [group setValue:[each objectForKey:@"name"] forProperty:kABGroupNameProperty];
    [book addRecord:group];
    for (NSNumber* member in [each objectForKey:@"members"]) {
      [group addMember:[people objectAtIndex:[member unsignedIntegerValue]]];
    }
    [groups addObject:group.get()];
  }
  NSUInteger index = 0;
  for (NSDictionary* each in [description objectForKey:@"groups"]) {
    for (NSNumber* subgroup in [each objectForKey:@"subgroups"]) {
      [[groups objectAtIndex:index] addSubgroup:[groups objectAtIndex:[subgroup unsignedIntegerValue]]];
    }
    ++index;
  }
  return [book save] != NO;
}

// [[name, address]]; empty without recipients.
id recipient(NSString* address, NSDictionary* description) {
  static_cast<void>(tessaro::platform::SharedAddressBook());
  TsRecipient* found = [TsRecipient recipient:address person:NewPerson(description)];
  return found != nil ? Described(@[ found ]) : @[];
}

// Nanoseconds of a group's expansion, and how many recipients it has.
id timeGroup(NSString* name) {
  const std::uint64_t start = uv_hrtime();
  NSArray* recipients = TsRecipientsForGroupName(name);
  return @[ @(double(uv_hrtime() - start)), @([recipients count]) ];
}

// ---- Picker

TsAddressBookWindowController* Picker() { return [TsAddressBookWindowController sharedInstanceWithTranslations:nil]; }

// On the display, from its upper left.
NSArray* CentreOnDisplay(NSView* view, NSRect rect) {
  const NSRect inWindow = [view convertRect:rect toView:nil];
  const NSPoint centre = [[view window] convertBaseToScreen:NSMakePoint(NSMidX(inWindow), NSMidY(inWindow))];
  return @[ @(centre.x), @([[[view window] screen] frame].size.height - centre.y) ];
}

NSDictionary* DescribeView(NSView* view) {
  const NSRect frame = [view frame];
  NSMutableDictionary* description = [NSMutableDictionary dictionaryWithDictionary:@{
    @"class" : NSStringFromClass([view class]),
    @"frame" : @[ @(frame.origin.x), @(frame.origin.y), @(frame.size.width), @(frame.size.height) ],
    @"centre" : CentreOnDisplay(view, [view bounds]),
  }];
  if ([view isKindOfClass:[NSButton class]]) {
    [description setObject:[static_cast<NSButton*>(view) title] forKey:@"title"];
    [description setObject:[static_cast<NSButton*>(view) keyEquivalent] forKey:@"key"];
  }
  return description;
}

NSArray* DescribeRows(NSTableView* table) {
  NSMutableArray* rows = [NSMutableArray array];
  for (NSInteger row = 0; row < [table numberOfRows]; ++row) {
    NSMutableArray* texts = [NSMutableArray array];
    for (NSTableColumn* column in [table tableColumns]) {
      [texts addObject:[[table dataSource] tableView:table objectValueForTableColumn:column row:row]];
    }
    [rows addObject:@{
      @"texts" : texts,
      @"centre" : CentreOnDisplay(table, [table rectOfRow:row]),
      @"isSelected" : @([table isRowSelected:row])
    }];
  }
  return rows;
}

void AddTables(NSView* view, NSMutableArray* tables) {
  if ([view isKindOfClass:[NSTableView class]]) [tables addObject:DescribeRows(static_cast<NSTableView*>(view))];
  for (NSView* subview in [view subviews]) AddTables(subview, tables);
}

// The views of the picker's window and their frames.
id picker() {
  NSWindow* window = [Picker() window];
  NSMutableArray* views = [NSMutableArray array];
  NSMutableArray* tables = [NSMutableArray array];
  for (NSView* view in [[window contentView] subviews]) [views addObject:DescribeView(view)];
  AddTables([window contentView], tables);
  const NSSize size = [[window contentView] frame].size;
  return @{
    @"title" : [window title],
    @"isVisible" : Truth([window isVisible]),
    @"isKey" : Truth([window isKeyWindow]),
    @"size" : @[ @(size.width), @(size.height) ],
    @"views" : views,
    @"tables" : tables,
  };
}

void resizePicker() { [[Picker() window] setContentSize:NSMakeSize(600, 700)]; }

}  // namespace

void AttachContactsProbe(v8::Local<v8::Object> exports) {
  PROBE(parse);
  PROBE(format);
  PROBE(timeText);
  PROBE(make);
  PROBE(recipient);
  PROBE(timeGroup);
  PROBE(picker);
  PROBE(resizePicker);
}
