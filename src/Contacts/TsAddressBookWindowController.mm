#import "Contacts/TsAddressBookWindowController.h"

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#import "Contacts/TsRecipient.h"
#include "Utilities/Controls.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsNotificationObserver.h"

namespace {

constexpr CGFloat kWindowSize = 500;
constexpr CGFloat kMargin = 20;
constexpr CGFloat kButtonsHeight = 70;
// Not Escape, which must leave the window open.
NSString* const kCancelKey = @"\u0017";
NSString* const kReturnKey = @"\r";

// The first of two persons with the same address counts.
NSDictionary* RecordsByAddress(NSArray* records) {
  NSMutableDictionary* byAddress = [NSMutableDictionary dictionary];
  for (ABPerson* person in records) {
    ABMultiValue* addresses = [person valueForProperty:kABEmailProperty];
    for (NSUInteger index = 0; index < [addresses count]; ++index) {
      NSString* address = [addresses valueAtIndex:index];
      if ([byAddress objectForKey:address] == nil) [byAddress setObject:person forKey:address];
    }
  }
  return byAddress;
}

}  // namespace

@implementation TsAddressBookWindowController

@synthesize peoplePickerView = _peoplePickerView;

+ (instancetype)sharedInstanceWithTranslations:(NSDictionary*)translations {
  static Forever<Ref<TsAddressBookWindowController>> instance;
  if (!*instance) *instance = Adopt([[self alloc] initWithTranslations:translations]);
  return *instance;
}

- (instancetype)initWithTranslations:(NSDictionary*)translations {
  _translations = Retain(translations);
  const NSUInteger style = NSTitledWindowMask | NSClosableWindowMask | NSResizableWindowMask;
  const auto window = Adopt([[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, kWindowSize, kWindowSize)
                                                        styleMask:style
                                                          backing:NSBackingStoreBuffered
                                                            defer:YES]);
  self = [super initWithWindow:window];
  if (!self) return nil;
  [window setReleasedWhenClosed:NO];
  [window setTitle:[self translation:@"window-title"]];
  [self addPeoplePickerTo:[window contentView]];
  [self addButtonsTo:[window contentView]];
  [window setFrameAutosaveName:@"TsAddressBookWindow"];
  return self;
}

- (void)addPeoplePickerTo:(NSView*)view {
  const NSSize size = [view bounds].size;
  const NSRect frame =
      NSMakeRect(kMargin, kButtonsHeight, size.width - 2 * kMargin, size.height - kButtonsHeight - kMargin);
  const auto picker = Adopt([[ABPeoplePickerView alloc] initWithFrame:frame]);
  [picker setAutoresizingMask:NSViewWidthSizable | NSViewHeightSizable];
  [picker addProperty:kABEmailProperty];
  [picker setDisplayedProperty:kABEmailProperty];
  [picker setAllowsGroupSelection:YES];
  [picker setAllowsMultipleSelection:YES];
  [picker setTarget:self];
  [picker setGroupDoubleAction:@selector(groupDoubleAction:)];
  [picker setNameDoubleAction:@selector(nameDoubleAction:)];
  [view addSubview:picker];
  _peoplePickerView = picker;
}

- (void)addButton:(NSButton*)button to:(NSView*)view left:(CGFloat)left mask:(NSUInteger)mask {
  [button setFrameOrigin:NSMakePoint(left, kMargin)];
  [button setAutoresizingMask:mask | NSViewMaxYMargin];
  [view addSubview:button];
}

- (void)addButtonsTo:(NSView*)view {
  const auto accept = TsNewButton([self translation:@"accept-button-label"], self, @selector(accept:), kReturnKey, 0);
  const auto cancel = TsNewButton([self translation:@"cancel-button-label"], self, @selector(cancel:), kCancelKey, 0);
  const auto edit = TsNewButton([self translation:@"edit-in-contacts-button-label"], _peoplePickerView,
                                @selector(editInAddressBook:), @"", 0);
  const CGFloat acceptLeft = [view bounds].size.width - kMargin - [accept frame].size.width;
  [self addButton:accept to:view left:acceptLeft mask:NSViewMinXMargin];
  [self addButton:cancel to:view left:acceptLeft - [cancel frame].size.width mask:NSViewMinXMargin];
  [self addButton:edit to:view left:kMargin mask:NSViewMaxXMargin];
}

TS_RETAINED(NSDictionary, translations, Translations)

- (NSString*)translation:(NSString*)key {
  if (NSString* text = As<NSString>([_translations objectForKey:key])) return text;
  TsLogError(@"No translation for %@ in %@", key, _translations.get());
  return key;
}

- (void)openForWindow:(id)window {
  [[self window] center];
  [[self window] makeKeyAndOrderFront:nil];
}

- (NSArray*)pickedRecipients {
  NSArray* values = [_peoplePickerView selectedValues];
  NSDictionary* records = RecordsByAddress([_peoplePickerView selectedRecords]);
  NSArray* groups = [_peoplePickerView selectedGroups];
  NSMutableArray* recipients = [NSMutableArray array];
  for (ABGroup* group in groups) [recipients addObjectsFromArray:[TsRecipient recipientsFromGroup:group]];
  // With groups, single addresses don't count.
  if ([groups count] > 0) return recipients;
  for (NSString* value in values) {
    TsRecipient* recipient = [TsRecipient recipient:value person:[records objectForKey:value]];
    if (recipient != nil) [recipients addObject:recipient];
  }
  return recipients;
}

- (IBAction)accept:(id)sender {
  [[self window] orderOut:sender];
  NSMutableArray* addresses = [NSMutableArray array];
  for (TsRecipient* recipient in [self pickedRecipients]) [addresses addObject:[recipient stringForEmail]];
  TsPost(@"TsContactEmailAddressesPicked", self, @{@"addresses" : TsConvertToJSONString(addresses)});
}

- (IBAction)cancel:(id)sender {
  [[self window] orderOut:sender];
}

- (IBAction)groupDoubleAction:(id)sender {
  [self accept:sender];
}

- (IBAction)nameDoubleAction:(id)sender {
  [self accept:sender];
}

@end
