#import "Keychain/TsKeyChain.h"

#include <optional>
#include <string>

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Base/TsUnicode.h"
#include "Extensions/NSApplication+TsBundle.h"

namespace platform = tessaro::platform;

namespace {

using platform::Secret;
using platform::SecretItem;
using platform::SecretFailure;

NSString* const kPreviousVersionsService = @"Tessaro 3";
NSString* const kSeparateService = @"Kolvar";
constexpr int kMostRounds = 10;

// The UTF-8 bytes of a password, without leaving a copy anywhere.
Secret SecretOf(NSString* password) {
  constexpr std::size_t kMostBytesPerUnit = 3;
  Secret bytes([password length] * kMostBytesPerUnit);
  Secret units([password length] * sizeof(char16_t));
  auto* characters = reinterpret_cast<char16_t*>(units.Data());
  [password getCharacters:reinterpret_cast<unichar*>(characters) range:NSMakeRange(0, [password length])];
  bytes.Shorten(Utf16ToUtf8({characters, [password length]}, bytes.Data()));
  return bytes;
}

// nil when the bytes are not UTF-8: a repaired password would be a wrong one.
NSString* PasswordOf(const Secret& secret) {
  NSString* password = TsNSString(secret.View());
  return SecretOf(password).View() == secret.View() ? password : nil;
}

Result<SecretItem> FirstOf(Result<platform::SecretStore::Items> found) {
  return std::move(found).map([](auto items) { return std::move(items.front()); });
}

NSDictionary* Succeeded() {
  return @{@"ok?" : @(true)};
}

NSDictionary* Failed(int code) {
  return @{@"ok?" : @(false), @"error" : @(code)};
}

NSDictionary* Found(id password) {
  return @{@"ok?" : @(true), @"password" : password};
}

NSDictionary* Written(const Result<void>& result, NSString* account, NSString* password, NSString* done,
                      NSString* attempt) {
  const auto length = static_cast<unsigned long>([password length]);
  if (result) {
    TsLogInfo(@"%@. (account=%@, passwordLength=%lu)", done, account, length);
    return Succeeded();
  }
  const int code = result.error().code;
  TsLogWarning(@"Could not %@. (account=%@, passwordLength=%lu, error=%d)", attempt, account, length, code);
  return Failed(code);
}

}  // namespace

@implementation TsKeychain

+ (TsKeychain*)sharedInstance {
  static Forever<Ref<TsKeychain>> keychain([] {
    const bool isSeparate = [[NSApplication ts_bundleName] isEqualToString:kSeparateService];
    return Adopt([[TsKeychain alloc] initWithService:isSeparate ? kSeparateService : kPreviousVersionsService]);
  }());
  return *keychain;
}

- (instancetype)initWithService:(NSString*)service {
  return [self initWithService:service store:platform::SecretStore::Shared()];
}

- (instancetype)initWithService:(NSString*)service store:(platform::SecretStore&)store {
  if ((self = [super init]) != nil) {
    _service = Copy(service);
    _store = &store;
  }
  return self;
}

- (NSString*)service {
  return _service;
}

- (Result<SecretItem>)findAccount:(NSString*)account {
  return FirstOf(_store->Find(TsStdString(_service), TsStdString(account)));
}

- (NSDictionary*)passwordForAccount:(NSString*)account {
  const auto secret = [self findAccount:account].and_then([&](const SecretItem& item) { return _store->Read(item); });
  NSString* password = secret ? PasswordOf(*secret) : nil;
  if (password != nil) return Found(password);
  const int code = secret ? SecretFailure::kDecode : secret.error().code;
  if (code == SecretFailure::kItemNotFound) return Found([NSNull null]);
  TsLogWarning(@"Could not read password from keychain. (account=%@, error=%d)", account, code);
  return Failed(code);
}

- (NSDictionary*)setPassword:(NSString*)password forAccount:(NSString*)account {
  if (password == nil) return [self deleteItem:[self findAccount:account] ofAccount:account];
  const auto item = FirstOf(_store->FindVisible(TsStdString(_service), TsStdString(account)));
  if (item) {
    const auto modified = _store->Replace(*item, SecretOf(password));
    return Written(modified, account, password, @"Modified password in keychain", @"modify keychain item");
  }
  if (item.error().code == SecretFailure::kItemNotFound) {
    const auto added = _store->Add(TsStdString(_service), TsStdString(account), SecretOf(password));
    return Written(added, account, password, @"Added password to keychain", @"add password to keychain");
  }
  // By contract this counts as success.
  TsLogWarning(@"Could not find keychain item. (account=%@, error=%d)", account, item.error().code);
  return Succeeded();
}

- (NSDictionary*)deleteItem:(const Result<SecretItem>&)item ofAccount:(NSString*)account {
  if (!item) {
    TsLogError(@"Could not find keychain item in order to delete it. (account=%@, error=%d)", account,
               item.error().code);
    return Failed(item.error().code);
  }
  if (const auto removed = _store->Remove(*item)) {
    TsLogInfo(@"Deleted password from keychain. (account=%@)", account);
  } else {
    TsLogWarning(@"Could not delete keychain item. (account=%@, error=%d)", account, removed.error().code);
  }
  return Succeeded();
}

- (NSSet*)allAccounts {
  const auto accounts = _store->Find(TsStdString(_service), std::nullopt).and_then([&](const auto& items) {
    return _store->Accounts(items);
  });
  NSMutableSet* names = [NSMutableSet set];
  if (!accounts && accounts.error().code != SecretFailure::kItemNotFound) {
    TsLogWarning(@"Error while querying all accounts in Keychain. (error=%@)", TsNSString(accounts.error().message));
    return nil;
  }
  for (const auto& account : accounts.value_or(platform::SecretStore::AccountNames())) {
    if (account) [names addObject:TsNewString(*account)];
  }
  return names;
}

- (BOOL)removePasswordForAccount:(NSString*)account {
  const auto item = [self findAccount:account];
  if (!item || !_store->Remove(*item)) return NO;
  [self logRemovalOf:account];
  return YES;
}

- (BOOL)removeAllPasswords {
  const std::string service = TsStdString(_service);
  // Repeat for items that are added while others are removed; a faulty service may show an item for ever.
  for (int round = 0; round < kMostRounds; ++round) {
    const auto items = _store->Find(service, std::nullopt);
    if (!items) return YES;
    const auto accounts = _store->Accounts(*items).value_or(platform::SecretStore::AccountNames());
    for (std::size_t i = 0; i < items->size(); ++i) {
      if (!_store->Remove((*items)[i])) return NO;
      const bool isKnown = i < accounts.size() && accounts[i];
      [self logRemovalOf:isKnown ? TsNSString(*accounts[i]) : @"unknown"];
    }
  }
  return NO;
}

- (void)logRemovalOf:(NSString*)account {
  TsLogInfo(@"Removed keychain entry '%@' (%@).", account, _service.get());
}

@end

@implementation TsTransientKeychain

+ (TsTransientKeychain*)sharedInstance {
  static Forever<Ref<TsTransientKeychain>> keychain(Adopt([[TsTransientKeychain alloc] init]));
  return *keychain;
}

- (instancetype)init {
  if ((self = [super init]) != nil) _passwordsByAccount = Adopt([[NSMutableDictionary alloc] init]);
  return self;
}

- (NSMutableDictionary*)passwordsByAccount {
  return _passwordsByAccount;
}

- (void)setPassword:(NSString*)password forAccount:(NSString*)account {
  if (password != nil) {
    [_passwordsByAccount setObject:password forKey:account];
  } else {
    [_passwordsByAccount removeObjectForKey:account];
  }
}

- (NSString*)passwordForAccount:(NSString*)account {
  return [_passwordsByAccount objectForKey:account];
}

@end
