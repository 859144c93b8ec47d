#include "Base/Ref.h"
#import "Keychain/TsKeyChain.h"
#include "Platform/SecretStore.h"
#include "Probe.h"

namespace {

// The keychain of a service in a store with this deadline, in milliseconds, of the first call.
id withDeadline(NSString* service, int milliseconds) {
  using tessaro::platform::SecretStore;
  const std::chrono::milliseconds deadline(milliseconds);
  static Forever<SecretStore> store(SecretStore::Deadlines{deadline, deadline});
  return Adopt([[TsKeychain alloc] initWithService:service store:*store]).Autoreleased();
}

PROBES("keychain", withDeadline);

}  // namespace
