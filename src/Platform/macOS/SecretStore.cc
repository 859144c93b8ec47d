#include "Platform/SecretStore.h"

#include <Security/Security.h>

#include <utility>

#include "Base/Lifetime.h"
#include "Platform/macOS/CFRef.h"

// The SecItem functions on the user's file-based keychains, where earlier versions kept their items too: items of the
// data protection keychain are others, and need an entitlement.
//
// Statuses are the system's own numbers. Deadlines can't be kept: a call that has the user unlock a keychain, or
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

  // Where a text was no text that a keychain can have.
  [[nodiscard]] bool IsValid() const { return isValid_; }
  [[nodiscard]] CFDictionaryRef get() const { return dictionary_.get(); }

 private:
  CFRef<CFMutableDictionaryRef> dictionary_;
  bool isValid_ = true;
};

SecretStatus StatusOf(OSStatus status) { return static_cast<SecretStatus>(status); }

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

SecretStatus Update(const Dictionary& query, const Secret& secret) {
  if (!query.IsValid()) return SecretStatus::Parameter;
  Dictionary change;
  change.Put(kSecValueData, NewDataOf(secret).get());
  return StatusOf(SecItemUpdate(query.get(), change.get()));
}

std::vector<SecretItem> ItemsIn(CFTypeRef found) {
  std::vector<SecretItem> items;
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

class Keychain final : public SecretStore {
 public:
  SecretResult<std::vector<SecretItem>> Find(std::string_view service,
                                             std::optional<std::string_view> account) noexcept override;
  SecretResult<std::vector<SecretItem>> FindVisible(std::string_view service,
                                                    std::string_view account) noexcept override;
  SecretResult<Secret> Read(const SecretItem& item) noexcept override;
  SecretResult<std::vector<std::optional<std::string>>> Accounts(std::span<const SecretItem> items) noexcept override;
  SecretStatus Add(std::string_view service, std::string_view account, const Secret& secret) noexcept override;
  SecretStatus Replace(const SecretItem& item, const Secret& secret) noexcept override;
  SecretStatus Remove(const SecretItem& item) noexcept override;
};

SecretResult<std::vector<SecretItem>> Keychain::Find(std::string_view service,
                                                     std::optional<std::string_view> account) noexcept {
  Dictionary query = Passwords();
  query.Put(kSecAttrService, service).Put(kSecReturnPersistentRef, kCFBooleanTrue);
  query.Put(kSecMatchLimit, account ? kSecMatchLimitOne : kSecMatchLimitAll);
  if (account) query.Put(kSecAttrAccount, *account);
  if (!query.IsValid()) return {SecretStatus::Parameter};
  CFRef<CFTypeRef> found;
  const OSStatus status = SecItemCopyMatching(query.get(), found.Receive());
  if (status != errSecSuccess) return {StatusOf(status)};
  auto items = ItemsIn(found.get());
  if (items.empty()) return {SecretStatus::ItemNotFound};
  return {SecretStatus::Success, std::move(items)};
}

// Attributes are seen in a locked keychain too.
SecretResult<std::vector<SecretItem>> Keychain::FindVisible(std::string_view service,
                                                            std::string_view account) noexcept {
  return Find(service, account);
}

SecretResult<Secret> Keychain::Read(const SecretItem& item) noexcept {
  Dictionary query = QueryFor(item);
  query.Put(kSecReturnData, kCFBooleanTrue);
  CFRef<CFTypeRef> found;
  const OSStatus status = SecItemCopyMatching(query.get(), found.Receive());
  if (status != errSecSuccess) return {StatusOf(status)};
  if (CFGetTypeID(found.get()) != CFDataGetTypeID()) return {SecretStatus::Decode};
  return {SecretStatus::Success, Secret(BytesOf(static_cast<CFDataRef>(found.get())))};
}

SecretResult<std::vector<std::optional<std::string>>> Keychain::Accounts(std::span<const SecretItem> items) noexcept {
  std::vector<std::optional<std::string>> accounts;
  for (const SecretItem& item : items) {
    Dictionary query = QueryFor(item);
    query.Put(kSecReturnAttributes, kCFBooleanTrue);
    CFRef<CFTypeRef> found;
    const bool isThere = SecItemCopyMatching(query.get(), found.Receive()) == errSecSuccess &&
                         CFGetTypeID(found.get()) == CFDictionaryGetTypeID();
    const auto attributes = static_cast<CFDictionaryRef>(isThere ? found.get() : nullptr);
    accounts.push_back(isThere ? TextOf(CFDictionaryGetValue(attributes, kSecAttrAccount)) : std::nullopt);
  }
  return {SecretStatus::Success, std::move(accounts)};
}

SecretStatus Keychain::Add(std::string_view service, std::string_view account, const Secret& secret) noexcept {
  Dictionary item = QueryFor(service, account);
  item.Put(kSecValueData, NewDataOf(secret).get());
  if (!item.IsValid()) return SecretStatus::Parameter;
  const OSStatus status = SecItemAdd(item.get(), nullptr);
  return status == errSecDuplicateItem ? Update(QueryFor(service, account), secret) : StatusOf(status);
}

SecretStatus Keychain::Replace(const SecretItem& item, const Secret& secret) noexcept {
  return Update(QueryFor(item), secret);
}

SecretStatus Keychain::Remove(const SecretItem& item) noexcept { return StatusOf(SecItemDelete(QueryFor(item).get())); }

}  // namespace

std::unique_ptr<SecretStore> SecretStore::WithDeadlines(Deadlines) { return std::make_unique<Keychain>(); }

SecretStore& SecretStore::Shared() {
  static Forever<Keychain> keychain;
  return *keychain;
}

std::string_view Message(SecretStatus status) noexcept {
  thread_local std::string message;
  const CFRef<CFStringRef> text(SecCopyErrorMessageString(static_cast<OSStatus>(status), nullptr));
  message = TextOf(text.get()).value_or("no message for this status");
  return message;
}

}  // namespace tessaro::platform
