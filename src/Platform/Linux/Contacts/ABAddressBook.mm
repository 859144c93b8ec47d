#include "Platform/AddressBook.h"

#import <Addresses/ADLocalAddressBook.h>

#include "Base/TsReplaceMethod.h"

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
  static const bool isComplete = (CompleteAddressBook(), true);
  static_cast<void>(isComplete);
  // The framework would create a folder for users without contacts. A folder that was there is not looked for again:
  // this is asked for each person of a group.
  static bool isThere = false;
  if (!isThere) isThere = [[NSFileManager defaultManager] fileExistsAtPath:Location()];
  return isThere ? [ADLocalAddressBook sharedAddressBook] : nil;
}

}  // namespace tessaro::platform
