#import <Foundation/Foundation.h>

#include <chrono>

#include "Base/Ref.h"
#import "Keychain/TsKeyChain.h"
#import "Keychain/TsTransientKeychain.h"
#include "Platform/SecretStore.h"
#include "Probe.h"

namespace platform = tessaro::platform;

namespace {

// A store with the deadlines of setDeadlines(), and the keychain of a service in it.
platform::SecretStore::Deadlines& Deadlines() {
  static platform::SecretStore::Deadlines deadlines;
  return deadlines;
}

Ref<TsKeychain> Keychain(NSString* service) {
  static const auto store = std::make_unique<platform::SecretStore>(Deadlines());
  return Adopt([[TsKeychain alloc] initWithService:service store:*store]);
}

// In milliseconds, before the first use of any other function here.
void setDeadlines(int reply, int prompt) {
  Deadlines() = {std::chrono::milliseconds(reply), std::chrono::milliseconds(prompt)};
}

id get(NSString* service, NSString* account) { return [Keychain(service) passwordForAccount:account]; }

id set(NSString* service, NSString* account, NSString* password) {
  return [Keychain(service) setPassword:password forAccount:account];
}

bool erase(NSString* service, NSString* account) { return [Keychain(service) removePasswordForAccount:account] != NO; }

bool removeAll(NSString* service) { return [Keychain(service) removeAllPasswords] != NO; }

id accounts(NSString* service) {
  return [[[Keychain(service) allAccounts] allObjects] sortedArrayUsingSelector:@selector(compare:)];
}

void setTransient(NSString* account, NSString* password) {
  [[TsTransientKeychain sharedInstance] setPassword:password forAccount:account];
}

int countTransient() { return static_cast<int>([[[TsTransientKeychain sharedInstance] passwordsByAccount] count]); }

PROBES("keychain", setDeadlines, get, set, erase, removeAll, accounts, setTransient, countTransient);

}  // namespace
