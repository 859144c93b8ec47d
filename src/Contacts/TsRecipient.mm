#import "Contacts/TsRecipient.h"

#include <vector>

#include "Base/TsString.h"

namespace platform = tessaro::platform;

namespace {

// The address is missing where the name has a "<".
NSString* HeaderItem(TsRecipient* recipient) {
  NSString* name = [recipient name];
  if ([name length] == 0) return [NSString stringWithFormat:@"<%@>", [recipient address]];
  if ([name rangeOfString:@"<" options:NSLiteralSearch].location != NSNotFound) {
    return [NSString stringWithFormat:@"\"%@\" ", name];
  }
  return [NSString stringWithFormat:@"\"%@\" <%@>", name, [recipient address]];
}

// `name <address>` or, without both brackets in this order, an address alone.
TsRecipient* RecipientIn(NSString* piece) {
  const NSRange open = [piece rangeOfString:@"<" options:NSLiteralSearch];
  const NSRange close = [piece rangeOfString:@">" options:NSLiteralSearch];
  if (open.location == NSNotFound || close.location == NSNotFound || close.location < open.location) {
    return [TsRecipient recipient:piece name:nil];
  }
  NSString* name = [piece substringToIndex:open.location];
  const NSRange address = NSMakeRange(NSMaxRange(open), close.location - NSMaxRange(open));
  return [TsRecipient recipient:[piece substringWithRange:address]
                           name:[name stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceCharacterSet]]];
}

// ---- Address book

BOOL HasAddress(ABPerson* person, NSString* address) {
  ABMultiValue* addresses = [person valueForProperty:kABEmailProperty];
  for (NSUInteger index = 0; index < [addresses count]; ++index) {
    if ([[addresses valueAtIndex:index] isEqual:address]) return YES;
  }
  return NO;
}

// nil for a person without an address.
NSString* PrimaryAddress(ABPerson* person) {
  ABMultiValue* addresses = [person valueForProperty:kABEmailProperty];
  if ([addresses count] == 0) return nil;
  const NSUInteger primary = [addresses indexForIdentifier:[addresses primaryIdentifier]];
  return primary < [addresses count] ? [addresses valueAtIndex:primary] : nil;
}

// The ordering of persons that have none of their own.
NSInteger DefaultOrdering() { return [platform::SharedAddressBook() defaultNameOrdering]; }

NSString* FullName(ABPerson* person, NSInteger flags, NSInteger defaultOrdering) {
  NSString* lastName = [person valueForProperty:kABLastNameProperty];
  const NSInteger ordering = flags & kABNameOrderingMask;
  const bool isLastNameFirst = (ordering != 0 ? ordering : defaultOrdering) == kABLastNameFirst;
  NSString* const parts[] = {
      [person valueForProperty:kABTitleProperty],
      isLastNameFirst ? lastName : nil,
      [person valueForProperty:kABFirstNameProperty],
      [person valueForProperty:kABMiddleNameProperty],
      isLastNameFirst ? nil : lastName,
      [person valueForProperty:kABSuffixProperty],
  };
  NSMutableArray* present = [NSMutableArray array];
  for (NSString* part : parts) {
    if (part != nil) [present addObject:part];
  }
  return [present componentsJoinedByString:@" "];
}

NSString* ShownName(ABPerson* person, NSInteger defaultOrdering) {
  const NSInteger flags = [[person valueForProperty:kABPersonFlags] integerValue];
  const bool isCompany = (flags & kABShowAsMask) != kABShowAsPerson;
  return isCompany ? [person valueForProperty:kABOrganizationProperty] : FullName(person, flags, defaultOrdering);
}

// The framework makes several objects for each record that it looks at: these two free them at once.

Ref<NSArray> MembersOf(ABGroup* group) {
  @autoreleasepool {
    return Retain([group members]);
  }
}

// nil if missing.
Ref<ABGroup> GroupNamed(NSString* name) {
  @autoreleasepool {
    for (ABGroup* group in [platform::SharedAddressBook() groups]) {
      if ([[group valueForProperty:kABGroupNameProperty] isEqual:name]) return Retain(group);
    }
    return nullptr;
  }
}

void AddMembers(NSMutableArray* recipients, ABGroup* group) {
  const NSInteger ordering = DefaultOrdering();  // reads the user defaults
  const auto members = MembersOf(group);
  for (ABPerson* person in members.get()) {
    @autoreleasepool {
      NSString* address = PrimaryAddress(person);
      if ([address length] > 0) [recipients addObject:[TsRecipient recipient:address name:ShownName(person, ordering)]];
    }
  }
}

// An entered group, and its subgroups that are still to be entered.
struct Level {
  Ref<NSString> id;
  Ref<NSEnumerator> subgroups;
};

// Without recursion: groups may be nested deeper than the stack is.
void AddAll(NSMutableArray* recipients, ABGroup* group) {
  std::vector<Level> levels;
  NSMutableSet* entered = [NSMutableSet set];
  const auto enter = [&](ABGroup* next) {
    NSString* uniqueId = [next uniqueId];
    if ([entered containsObject:uniqueId]) return;
    [entered addObject:uniqueId];
    AddMembers(recipients, next);
    levels.push_back({Retain(uniqueId), Retain<NSEnumerator>([[next subgroups] objectEnumerator])});
  };
  enter(group);
  while (!levels.empty()) {
    if (ABGroup* subgroup = [levels.back().subgroups nextObject]) {
      enter(subgroup);
      continue;
    }
    [entered removeObject:levels.back().id];
    levels.pop_back();
  }
}

NSDictionary* RecipientDictionary(TsRecipient* recipient) {
  if ([[recipient name] length] == 0) return @{@"email" : [recipient address]};
  return @{@"name" : [recipient name], @"email" : [recipient address]};
}

}  // namespace

@implementation TsRecipient

- (instancetype)initWithAddress:(Ref<NSString>)address name:(Ref<NSString>)name {
  self = [super init];
  if (self) {
    _address = std::move(address);
    _name = std::move(name);
  }
  return self;
}

- (instancetype)init {
  return [self initWithAddress:Copy(@"") name:Copy(@"")];
}

+ (instancetype)recipient:(NSString*)address name:(NSString*)name {
  return Adopt([[self alloc] initWithAddress:Copy(address) name:Copy(TsOrEmpty(name))]).Autoreleased();
}

+ (instancetype)recipient:(NSString*)address person:(ABPerson*)person {
  return HasAddress(person, address) ? [self recipient:address name:ShownName(person, DefaultOrdering())] : nil;
}

+ (NSArray*)recipientsFromGroup:(ABGroup*)group {
  NSMutableArray* recipients = [NSMutableArray array];
  AddAll(recipients, group);
  return recipients;
}

+ (NSString*)toString:(NSArray*)recipients {
  return [[recipients valueForKey:@"stringForEmail"] componentsJoinedByString:@", "];
}

+ (NSArray*)fromString:(NSString*)string {
  NSMutableArray* recipients = [NSMutableArray array];
  for (NSString* piece in [string componentsSeparatedByString:@","]) {
    if ([piece length] > 0) [recipients addObject:RecipientIn(piece)];
  }
  return recipients;
}

- (NSString*)stringForEmail {
  return HeaderItem(self);
}

TS_COPIED(NSString, address, Address)
TS_COPIED(NSString, name, Name)

@end

NSArray* TsRecipientsForGroupName(NSString* groupName) {
  const auto group = GroupNamed(groupName);
  if (!group) return nil;
  NSMutableArray* dictionaries = [NSMutableArray array];
  for (TsRecipient* recipient in [TsRecipient recipientsFromGroup:group]) {
    [dictionaries addObject:RecipientDictionary(recipient)];
  }
  return dictionaries;
}
