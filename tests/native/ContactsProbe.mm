#import <Addresses/ADLocalAddressBook.h>

#include "Contacts/TsRecipient.h"
#include "Platform/AddressBook.h"
#include "Probe.h"

namespace {

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
  auto person = Adopt([[ABPerson alloc] init]);
  for (NSString* key in description) {
    const bool isAddresses = [key isEqual:@"emails"];
    id value = isAddresses ? Addresses(description) : [[description objectForKey:key] description];
    [person setValue:value forProperty:isAddresses ? kABEmailProperty : key];
  }
  return person.Autoreleased();
}

// A new address book of {people: [{emails, …properties}], groups: [{name, members, subgroups}]}, whose groups name
// people and groups by their numbers.
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

// [name, address], or nil.
id recipient(NSString* address, NSDictionary* description) {
  static_cast<void>(tessaro::platform::SharedAddressBook());
  TsRecipient* found = [TsRecipient recipient:address person:NewPerson(description)];
  return found != nil ? @[ [found name], [found address] ] : nil;
}

PROBES("contacts", make, recipient);

}  // namespace
