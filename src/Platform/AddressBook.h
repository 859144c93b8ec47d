#pragma once

// The user's contacts, and the view to pick some of them, as Cocoa's address book has them. For .mm files.

#ifdef __APPLE__
#import <AddressBook/AddressBook.h>
#else
#include "Platform/Linux/Contacts/ABAddressBook.h"
#endif

namespace tessaro::platform {

// nil when the user has no contacts that could be read. Main thread only; reading them takes a while the first time.
[[nodiscard]] ABAddressBook* SharedAddressBook();

}  // namespace tessaro::platform
