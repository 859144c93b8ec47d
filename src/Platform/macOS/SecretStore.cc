#include "Platform/SecretStore.h"

#include <Security/Security.h>

#include "Platform/macOS/CFRef.h"

// The SecItem functions on the user's file-based keychains, where earlier versions kept their items too: items of the
// data protection keychain are others, and need an entitlement.
//
// Failures have the system's own numbers. Deadlines can't be kept: a call that has the user unlock a keychain, or
// consent to another program's item, holds its thread until the user has answered. Main thread only.
namespace tessaro::platform {

namespace {

// A query or a set of attributes.
class Dictionary {
 public:
  Dictionary()
      : dictionary_(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                              &kCFTypeDictionaryValueCallBacks)) {}

  Dictionary& Put(CFStringRef key, CFTypeRef value) {
    if (value == nullptr)
      isValid_ = false;
    else
      CFDictionarySetValue(dictionary_.get(), key, value);
    return *this;
  }
  Dictionary& Put(CFStringRef key, std::string_view text) {
    // Other programs would see a text that ends there.
    if (text.find('\0') != std::string_view::npos) isValid_ = false;
    return Put(key, NewCFString(text).get());
  }

  // Whether the keychain can hold all texts of the query.
  [[nodiscard]] bool IsValid() const { return isValid_; }
  [[nodiscard]] CFDictionaryRef get() const { return dictionary_.get(); }

 private:
  CFRef<CFMutableDictionaryRef> dictionary_;
  bool isValid_ = true;
};

tl::unexpected<Failure> FailWith(OSStatus status) {
  const CFRef<CFStringRef> text(SecCopyErrorMessageString(status, nullptr));
  return Fail(status, TextOf(text.get()).value_or("no message for this status"));
}

Result<void> Outcome(OSStatus status) {
  if (status != errSecSuccess) return FailWith(status);
  return {};
}

CFRef<CFDataRef> NewData(std::string_view bytes) {
  return CFRef(CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                            static_cast<CFIndex>(bytes.size())));
}

// The same without a copy, which would not be overwritten. `secret` must outlive it.
CFRef<CFDataRef> NewDataOf(const Secret& secret) {
  const std::string_view bytes = secret.View();
  return CFRef(CFDataCreateWithBytesNoCopy(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                           static_cast<CFIndex>(bytes.size()), kCFAllocatorNull));
}

std::string_view BytesOf(CFDataRef data) {
  return {reinterpret_cast<const char*>(CFDataGetBytePtr(data)), static_cast<std::size_t>(CFDataGetLength(data))};
}

Dictionary Passwords() {
  Dictionary query;
  query.Put(kSecClass, kSecClassGenericPassword);
  return query;
}

Dictionary QueryFor(const SecretItem& item) {
  Dictionary query = Passwords();
  query.Put(kSecValuePersistentRef, NewData(item.reference).get());
  return query;
}

Dictionary QueryFor(std::string_view service, std::string_view account) {
  Dictionary query = Passwords();
  query.Put(kSecAttrService, service).Put(kSecAttrAccount, account);
  return query;
}

Result<void> Update(const Dictionary& query, const Secret& secret) {
  if (!query.IsValid()) return FailWith(SecretFailure::kParameter);
  Dictionary change;
  change.Put(kSecValueData, NewDataOf(secret).get());
  return Outcome(SecItemUpdate(query.get(), change.get()));
}

SecretStore::Items ItemsIn(CFTypeRef found) {
  SecretStore::Items items;
  const auto add = [&items](CFTypeRef reference) {
    if (CFGetTypeID(reference) != CFDataGetTypeID()) return;
    items.push_back({std::string(BytesOf(static_cast<CFDataRef>(reference)))});
  };
  if (CFGetTypeID(found) != CFArrayGetTypeID()) {
    add(found);
    return items;
  }
  const auto all = static_cast<CFArrayRef>(found);
  for (CFIndex i = 0; i < CFArrayGetCount(all); ++i) add(CFArrayGetValueAtIndex(all, i));
  return items;
}

}  // namespace

struct SecretStore::Body {};

SecretStore::SecretStore(Deadlines) {}

SecretStore::~SecretStore() = default;

Result<SecretStore::Items> SecretStore::Find(std::string_view service,
                                             std::optional<std::string_view> account) noexcept {
  Dictionary query = Passwords();
  query.Put(kSecAttrService, service).Put(kSecReturnPersistentRef, kCFBooleanTrue);
  query.Put(kSecMatchLimit, account ? kSecMatchLimitOne : kSecMatchLimitAll);
  if (account) query.Put(kSecAttrAccount, *account);
  if (!query.IsValid()) return FailWith(SecretFailure::kParameter);
  CFRef<CFTypeRef> found;
  const OSStatus status = SecItemCopyMatching(query.get(), found.Receive());
  if (status != errSecSuccess) return FailWith(status);
  Items items = ItemsIn(found.get());
  if (items.empty()) return FailWith(SecretFailure::kItemNotFound);
  return items;
}

// Attributes are seen in a locked keychain too.
Result<SecretStore::Items> SecretStore::FindVisible(std::string_view service, std::string_view account) noexcept {
  return Find(service, account);
}

Result<Secret> SecretStore::Read(const SecretItem& item) noexcept {
  Dictionary query = QueryFor(item);
  query.Put(kSecReturnData, kCFBooleanTrue);
  CFRef<CFTypeRef> found;
  const OSStatus status = SecItemCopyMatching(query.get(), found.Receive());
  if (status != errSecSuccess) return FailWith(status);
  if (CFGetTypeID(found.get()) != CFDataGetTypeID()) return FailWith(SecretFailure::kDecode);
  return Secret(BytesOf(static_cast<CFDataRef>(found.get())));
}

Result<SecretStore::AccountNames> SecretStore::Accounts(std::span<const SecretItem> items) noexcept {
  AccountNames accounts;
  for (const SecretItem& item : items) {
    Dictionary query = QueryFor(item);
    query.Put(kSecReturnAttributes, kCFBooleanTrue);
    CFRef<CFTypeRef> found;
    const bool isThere = SecItemCopyMatching(query.get(), found.Receive()) == errSecSuccess &&
                         CFGetTypeID(found.get()) == CFDictionaryGetTypeID();
    const auto attributes = static_cast<CFDictionaryRef>(isThere ? found.get() : nullptr);
    accounts.push_back(isThere ? TextOf(CFDictionaryGetValue(attributes, kSecAttrAccount)) : std::nullopt);
  }
  return accounts;
}

Result<void> SecretStore::Add(std::string_view service, std::string_view account, const Secret& secret) noexcept {
  Dictionary item = QueryFor(service, account);
  item.Put(kSecValueData, NewDataOf(secret).get());
  if (!item.IsValid()) return FailWith(SecretFailure::kParameter);
  const OSStatus status = SecItemAdd(item.get(), nullptr);
  return status == errSecDuplicateItem ? Update(QueryFor(service, account), secret) : Outcome(status);
}

Result<void> SecretStore::Replace(const SecretItem& item, const Secret& secret) noexcept {
  return Update(QueryFor(item), secret);
}

Result<void> SecretStore::Remove(const SecretItem& item) noexcept {
  return Outcome(SecItemDelete(QueryFor(item).get()));
}

void SecretStore::Close() noexcept {}

}  // namespace tessaro::platform
