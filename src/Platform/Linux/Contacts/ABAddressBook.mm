#include "Platform/AddressBook.h"

#import <Addresses/ADLocalAddressBook.h>

#include "Base/TsLog.h"
#include "Base/TsReplaceMethod.h"
#include "Base/TsString.h"

NSString* const kABPersonFlags = @"ABPersonFlags";

namespace {

NSString* const kSettings = @"Addresses";
NSString* const kNameFormat = @"ScreenNameFormat";
NSString* const kLastNameFirst = @"LastNameFirst";

using IdentifierGetter = NSString* (*)(id, SEL);
IdentifierGetter storedPrimaryIdentifier = nullptr;

// When reading a record the framework loses the primary identifier: the first value counts then.
NSString* PrimaryIdentifier(id values, SEL command) {
  NSString* stored = storedPrimaryIdentifier(values, command);
  return stored != nil || [values count] == 0 ? stored : [values identifierAtIndex:0];
}

// The framework's own path ignores the user's GNUstep configuration.
NSString* Location() {
  NSArray* libraries = NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, YES);
  return [[libraries objectAtIndex:0] stringByAppendingPathComponent:@"Addresses"];
}

void CompleteAddressBook() {
  storedPrimaryIdentifier = reinterpret_cast<IdentifierGetter>(
      TsReplaceMethod([ADMultiValue class], @selector(primaryIdentifier), @selector(ts_storedPrimaryIdentifier),
                      reinterpret_cast<IMP>(PrimaryIdentifier)));
  [ADPerson addPropertiesAndTypes:@{kABPersonFlags : [NSNumber numberWithInt:ADStringProperty]}];
  [ADLocalAddressBook setDefaultLocation:Location()];
}

}  // namespace

@implementation ADAddressBook (NameOrdering)

- (NSInteger)defaultNameOrdering {
  NSDictionary* settings = [[NSUserDefaults standardUserDefaults] persistentDomainForName:kSettings];
  return [[settings objectForKey:kNameFormat] isEqual:kLastNameFirst] ? kABLastNameFirst : kABFirstNameFirst;
}

@end

namespace tessaro::platform {

ABAddressBook* SharedAddressBook() {
  [[maybe_unused]] static const bool isComplete = (CompleteAddressBook(), true);
  // The framework would create a folder for users without contacts. A folder that was there is not looked for again:
  // this is asked for each person of a group.
  static bool isThere = false;
  if (!isThere) isThere = [[NSFileManager defaultManager] fileExistsAtPath:Location()];
  return isThere ? [ADLocalAddressBook sharedAddressBook] : nil;
}

}  // namespace tessaro::platform

using tessaro::platform::SharedAddressBook;

// ---- The picker

namespace {

NSString* const kNameColumn = @"Name";
NSString* const kValueColumn = @"Value";
NSString* const kContactsApplication = @"AddressManager";
constexpr CGFloat kGroupsPart = 0.35;
constexpr CGFloat kRowHeight = 22;

Ref<NSTableView> NewTable(NSArray* columns, id owner) {
  auto table = Adopt([[NSTableView alloc] initWithFrame:NSZeroRect]);
  for (NSString* identifier in columns) {
    auto column = Adopt([[NSTableColumn alloc] initWithIdentifier:identifier]);
    [column setEditable:NO];
    [[column headerCell] setStringValue:identifier];
    [[column headerCell] setAlignment:NSLeftTextAlignment];
    [table addTableColumn:column];
  }
  [table setAutoresizesAllColumnsToFit:YES];
  [table setAllowsEmptySelection:YES];
  [table setRowHeight:kRowHeight];
  [table setDataSource:owner];
  [table setDelegate:owner];
  [table setTarget:owner];
  return table;
}

Ref<NSScrollView> NewScrollView(NSTableView* table, NSRect frame) {
  auto scrollView = Adopt([[NSScrollView alloc] initWithFrame:frame]);
  [scrollView setHasVerticalScroller:YES];
  [scrollView setBorderType:NSBezelBorder];
  [scrollView setAutoresizingMask:NSViewWidthSizable | NSViewHeightSizable];
  [scrollView setDocumentView:table];
  [table sizeToFit];
  return scrollView;
}

NSString* DisplayName(ABPerson* person) { return TsOrEmpty([person screenNameWithFormat:ADScreenNameLastNameFirst]); }

// The framework raises for damaged records.
template <typename Read>
NSArray* IfReadable(const Read& read) {
  @try {
    return read();
  } @catch (NSException* exception) {
    TsLogError(@"The contacts can't be read: %@", [exception reason]);
    return @[];
  }
}

std::vector<NSUInteger> SelectedRows(NSTableView* table) {
  std::vector<NSUInteger> rows;
  NSIndexSet* selected = [table selectedRowIndexes];
  for (NSUInteger row = [selected firstIndex]; row != NSNotFound; row = [selected indexGreaterThanIndex:row]) {
    rows.push_back(row);
  }
  return rows;
}

}  // namespace

@implementation ABPeoplePickerView

@synthesize target = _target;
@synthesize groupDoubleAction = _groupDoubleAction;
@synthesize nameDoubleAction = _nameDoubleAction;
@synthesize allowsGroupSelection = _allowsGroupSelection;

- (instancetype)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  if (!self) return nil;
  _property = Retain<NSString>(kABEmailProperty);
  _allowsGroupSelection = YES;
  [self addTables];
  for (NSString* change in @[ kABDatabaseChangedNotification, kABDatabaseChangedExternallyNotification ]) {
    [[NSNotificationCenter defaultCenter] addObserver:self selector:@selector(reload) name:change object:nil];
  }
  [self reload];
  return self;
}

- (void)dealloc {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  for (NSTableView* table : {_groupTable.get(), _nameTable.get()}) {
    [table setDataSource:nil];
    [table setDelegate:nil];
  }
  [super dealloc];
}

- (void)addTables {
  const NSSize size = [self bounds].size;
  const CGFloat groupsWidth = size.width * kGroupsPart;
  auto splitView = Adopt([[NSSplitView alloc] initWithFrame:[self bounds]]);
  [splitView setVertical:YES];
  [splitView setAutoresizingMask:NSViewWidthSizable | NSViewHeightSizable];
  _groupTable = NewTable(@[ @"Group" ], self);
  _nameTable = NewTable(@[ kNameColumn, kValueColumn ], self);
  [_groupTable setDoubleAction:@selector(groupDoubleClicked:)];
  [_nameTable setDoubleAction:@selector(nameDoubleClicked:)];
  [[[_nameTable tableColumnWithIdentifier:kValueColumn] headerCell]
      setStringValue:ABLocalizedPropertyOrLabel(_property)];
  [splitView addSubview:NewScrollView(_groupTable, NSMakeRect(0, 0, groupsWidth, size.height))];
  [splitView addSubview:NewScrollView(_nameTable, NSMakeRect(0, 0, size.width - groupsWidth, size.height))];
  [splitView adjustSubviews];
  [self addSubview:splitView];
}

// ---- Contents

- (void)reload {
  _groups = Retain(IfReadable([] { return [SharedAddressBook() groups]; }));
  [_groupTable reloadData];
  [self reloadNames];
}

- (NSArray*)shownPeople {
  NSArray* groups = [self selectedGroups];
  return IfReadable([groups]() -> NSArray* {
    if ([groups count] == 0) return [SharedAddressBook() people];
    NSMutableArray* people = [NSMutableArray array];
    for (ABGroup* group in groups) [people addObjectsFromArray:[group members]];
    return people;
  });
}

- (void)reloadNames {
  _rows.clear();
  for (ABPerson* person in [[self shownPeople] sortedArrayUsingSelector:@selector(compareByScreenName:)]) {
    const auto name = Retain(DisplayName(person));
    ABMultiValue* values = [person valueForProperty:_property];
    for (NSUInteger index = 0; index < [values count]; ++index) {
      _rows.push_back({Retain(person), name, Retain<NSString>([values valueAtIndex:index])});
    }
  }
  [_nameTable deselectAll:self];
  [_nameTable reloadData];
}

- (NSInteger)numberOfRowsInTableView:(NSTableView*)table {
  return table == _groupTable.get() ? static_cast<NSInteger>([_groups count]) : static_cast<NSInteger>(_rows.size());
}

- (id)tableView:(NSTableView*)table objectValueForTableColumn:(NSTableColumn*)column row:(NSInteger)row {
  const auto index = static_cast<NSUInteger>(row);
  if (table == _groupTable.get()) return [[_groups objectAtIndex:index] valueForProperty:kABGroupNameProperty];
  return [[column identifier] isEqual:kNameColumn] ? _rows[index].name : _rows[index].value;
}

- (BOOL)tableView:(NSTableView*)table shouldSelectRow:(NSInteger)row {
  return table != _groupTable.get() || _allowsGroupSelection;
}

- (void)tableViewSelectionDidChange:(NSNotification*)notification {
  if ([notification object] == _groupTable.get()) [self reloadNames];
}

- (void)setAllowsMultipleSelection:(BOOL)allows {
  [_groupTable setAllowsMultipleSelection:allows];
  [_nameTable setAllowsMultipleSelection:allows];
}

- (void)addProperty:(NSString*)property {
  [self setDisplayedProperty:property];
}

- (void)setDisplayedProperty:(NSString*)property {
  if ([property isEqual:_property]) return;
  _property = Adopt<NSString>([property copy]);
  [[[_nameTable tableColumnWithIdentifier:kValueColumn] headerCell]
      setStringValue:ABLocalizedPropertyOrLabel(_property)];
  [self reloadNames];
}

// ---- Selection

- (NSArray*)selectedValues {
  NSMutableArray* values = [NSMutableArray array];
  for (const NSUInteger row : SelectedRows(_nameTable)) [values addObject:_rows[row].value.get()];
  return values;
}

- (NSArray*)selectedRecords {
  NSMutableOrderedSet* people = [NSMutableOrderedSet orderedSet];
  for (const NSUInteger row : SelectedRows(_nameTable)) [people addObject:_rows[row].person.get()];
  return [people array];
}

- (NSArray*)selectedGroups {
  NSMutableArray* groups = [NSMutableArray array];
  for (const NSUInteger row : SelectedRows(_groupTable)) [groups addObject:[_groups objectAtIndex:row]];
  return groups;
}

// ---- Actions

- (void)groupDoubleClicked:(id)sender {
  if ([_groupTable clickedRow] >= 0) [NSApp sendAction:_groupDoubleAction to:_target from:self];
}

- (void)nameDoubleClicked:(id)sender {
  if ([_nameTable clickedRow] >= 0) [NSApp sendAction:_nameDoubleAction to:_target from:self];
}

- (void)editInAddressBook:(id)sender {
  // The application can't be asked to show a person.
  if (![[NSWorkspace sharedWorkspace] launchApplication:kContactsApplication]) {
    TsLogWarning(@"%@, the application for contacts, is not installed", kContactsApplication);
  }
}

@end
