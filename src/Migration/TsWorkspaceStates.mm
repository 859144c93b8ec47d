#import "Migration/TsWorkspaceStates.h"

#include <iterator>
#include <utility>

#include "Base/TsLog.h"

namespace {

enum Type : std::size_t { Gmail, GoogleInbox, Calendar, Contacts };

struct TypeDescription {
  NSString* name;
  NSString* label;
};

// In the order in which a text is compared with them.
const TypeDescription kTypes[] = {
    {@"Gmail", @"Gmail"},
    {@"GoogleInbox", @"Google Inbox"},
    {@"Calendar", @"Calendar"},
    {@"Contacts", @"Contacts"},
};

// The text form without the account.
NSString* PrefixOf(const TypeDescription& type) { return [NSString stringWithFormat:@"Ts_%@", type.name]; }

bool IsActive(TsWorkspaceState* state) { return [[state active] boolValue] != NO; }

}  // namespace

@implementation TsGoogleAppIdentifier

- (instancetype)initWithType:(std::size_t)type accountIdentifier:(NSString*)accountIdentifier {
  self = [super init];
  if (self) {
    _type = type;
    _accountIdentifier = Copy(accountIdentifier);
  }
  return self;
}

+ (TsGoogleAppIdentifier*)identifierWithType:(std::size_t)type accountIdentifier:(NSString*)account {
  return Adopt([[self alloc] initWithType:type accountIdentifier:account]).Autoreleased();
}

// The factory, the conversion and the question of one type.
#define TYPE(type, Type)                                                                          \
  +(TsGoogleAppIdentifier*)type##IdentifierWithAccountIdentifier : (NSString*)accountIdentifier { \
    return [self identifierWithType:Type accountIdentifier:accountIdentifier];                    \
  }                                                                                               \
  -(TsGoogleAppIdentifier*)to##Type##Identifier {                                                 \
    return [TsGoogleAppIdentifier identifierWithType:Type accountIdentifier:_accountIdentifier];  \
  }                                                                                               \
  -(BOOL)is##Type {                                                                               \
    return _type == Type;                                                                         \
  }

TYPE(gmail, Gmail)
TYPE(googleInbox, GoogleInbox)
TYPE(calendar, Calendar)
TYPE(contacts, Contacts)

+ (NSArray*)allWithAccountIdentifier:(NSString*)accountIdentifier {
  NSMutableArray* all = [NSMutableArray arrayWithCapacity:std::size(kTypes)];
  for (const std::size_t type : {Gmail, GoogleInbox, Calendar, Contacts}) {
    [all addObject:[self identifierWithType:type accountIdentifier:accountIdentifier]];
  }
  return all;
}

+ (TsGoogleAppIdentifier*)identifierWithDescription:(NSString*)description {
  for (const std::size_t type : {Gmail, GoogleInbox, Calendar, Contacts}) {
    NSString* prefix = PrefixOf(kTypes[type]);
    // Any character separates the account.
    if (![description hasPrefix:prefix] || [description length] == [prefix length]) continue;
    return [self identifierWithType:type accountIdentifier:[description substringFromIndex:[prefix length] + 1]];
  }
  @throw [NSException exceptionWithName:@"UnknownIdentifier" reason:description userInfo:nil];
}

- (id)copyWithZone:(NSZone*)zone {
  return Retain(self).Leak();
}

- (NSString*)accountIdentifier {
  return _accountIdentifier;
}

- (NSString*)type {
  return kTypes[_type].name;
}

- (NSString*)typeLabel {
  return NSLocalizedString(kTypes[_type].label, nil);
}

- (NSImage*)defaultIcon {
  return [NSImage imageNamed:[[self type] stringByAppendingString:@"_Template"]];
}

- (NSString*)description {
  return [NSString stringWithFormat:@"%@_%@", PrefixOf(kTypes[_type]), _accountIdentifier.get()];
}

- (BOOL)isEqual:(id)other {
  return [other isKindOfClass:[TsGoogleAppIdentifier class]] && [self isEqualToIdentifier:other];
}

- (BOOL)isEqualToIdentifier:(TsGoogleAppIdentifier*)identifier {
  if (identifier == nil || _type != identifier->_type) return NO;
  return _accountIdentifier == identifier->_accountIdentifier ||
         [_accountIdentifier isEqualToString:identifier->_accountIdentifier];
}

- (NSUInteger)hash {
  return 31 * [_accountIdentifier hash] + [[self type] hash];
}

@end

@implementation TsGoogleAppState

- (TsWorkspaceState*)workspaceState {
  return [self objectIn:"workspaceState"];
}

@end

@implementation TsWorkspaceState

- (void)awakeFromInsert {
  [self setLastUpdatedAt:[NSDate date]];
}

- (NSOrderedSet*)appStates {
  return [NSOrderedSet orderedSetWithArray:[self objectsIn:"appStates"]];
}

- (TsGoogleAppState*)addAppStateWithIdentifier:(TsGoogleAppIdentifier*)identifier {
  TsGoogleAppState* state = [self insertObjectIn:"appStates"];
  [state setIdentifier:[identifier description]];
  return state;
}

@end

@implementation TsWorkspaceStates

- (NSArray*)all {
  NSArray* states = [self fetch:"WorkspaceState" forQuery:@"TsWorkspaceStates#all"];
  return TsSorted(states, [](TsWorkspaceState* state) { return -TsSortKey([state lastUpdatedAt]); });
}

- (TsWorkspaceState*)insertNewWorkspaceState {
  return [_context insert:"WorkspaceState"];
}

- (void)deleteWorkspaceState:(TsWorkspaceState*)state {
  [_context deleteObject:state];
}

- (TsWorkspaceState*)activeWorkspaceState {
  NSArray* states = [self fetch:"WorkspaceState" forQuery:@"TsWorkspaceStates#activeWorkspaceState"];
  if (states == nil) return nil;
  for (TsWorkspaceState* state in states) {
    if (IsActive(state)) return state;
  }
  TsWorkspaceState* state = [self insertNewWorkspaceState];
  [state setActive:[NSNumber numberWithInt:1]];
  [self store:nil];
  return state;
}

- (void)setActiveWorkspaceState:(TsWorkspaceState*)state {
  for (TsWorkspaceState* each in [self all]) [each setActive:[NSNumber numberWithInt:0]];
  [state setActive:[NSNumber numberWithInt:1]];
}

- (TsGoogleAppState*)findFirstGoogleAppStateByAppIdentifier:(TsGoogleAppIdentifier*)identifier {
  NSString* query =
      [NSString stringWithFormat:@"TsWorkspaceStates#findFirstGoogleAppStateByAppIdentifier:%@", identifier];
  NSMutableArray* found = [NSMutableArray array];
  for (TsGoogleAppState* state in [self fetch:"GoogleAppState" forQuery:query]) {
    if ([[state identifier] isEqualToString:[identifier description]]) [found addObject:state];
  }
  NSArray* sorted = TsSorted(found, [](TsGoogleAppState* state) {
    return std::pair(!IsActive([state workspaceState]), -TsSortKey([[state workspaceState] lastUpdatedAt]));
  });
  return [sorted firstObject];
}

- (void)deleteGoogleAppState:(TsGoogleAppState*)state {
  [_context deleteObject:state];
}

- (void)store:(id)sender {
  if (![_context hasChanges]) return;
  NSError* error = nil;
  if ([_context save:&error]) return;
  TsLogError(@"%@\n%@", error, [NSThread callStackSymbols]);
  [_context rollback];
}

@end
