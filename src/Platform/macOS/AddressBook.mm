#include "Platform/AddressBook.h"

#include "Base/TsLog.h"

// AddressBook.framework, deprecated since 10.11 and still there. The first call asks the user for consent to read the
// contacts and waits for the answer; without NSContactsUsageDescription in the host's Info.plist the system ends the
// process. Main thread only.
namespace tessaro::platform {

ABAddressBook* SharedAddressBook() {
  // By name, for systems that have given the framework up.
  Class addressBook = NSClassFromString(@"ABAddressBook");
  if (addressBook == Nil) TsLogError(@"This system has no AddressBook framework: there are no contacts");
  return [addressBook sharedAddressBook];
}

}  // namespace tessaro::platform
