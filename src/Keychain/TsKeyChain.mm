#import "Keychain/TsKeyChain.h"

#include <optional>
#include <string>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Base/TsUnicode.h"
#include "Extensions/NSApplication+TsBundle.h"

namespace platform = tessaro::platform;

namespace {

using platform::Secret;
using platform::SecretItem;
using platform::SecretStatus;

NSString* const kPreviousVersionsService = @"Tessaro 3";
NSString* const kSeparateService = @"Kolvar";

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

platform::SecretResult<SecretItem> FirstOf(platform::SecretResult<std::vector<SecretItem>> found) {
  if (found.status != SecretStatus::Success) return {found.status};
  return {SecretStatus::Success, std::move(found.value.front())};
}

int Code(SecretStatus status) { return static_cast<int>(status); }

NSDictionary* Succeeded() { return [NSDictionary dictionaryWithObject:[NSNumber numberWithBool:YES] forKey:@"ok?"]; }

NSDictionary* Failed(SecretStatus status) {
  return [NSDictionary dictionaryWithObjectsAndKeys:[NSNumber numberWithBool:NO], @"ok?",
                                                    [NSNumber numberWithInt:Code(status)], @"error", nil];
}

NSDictionary* Found(id password) {
  return [NSDictionary dictionaryWithObjectsAndKeys:[NSNumber numberWithBool:YES], @"ok?", password, @"password", nil];
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

- (platform::SecretResult<SecretItem>)findAccount:(NSString*)account {
  return FirstOf(_store->Find(TsStdString(_service), TsStdString(account)));
}

- (NSDictionary*)passwordForAccount:(NSString*)account {
  const auto item = [self findAccount:account];
  SecretStatus status = item.status;
  if (status == SecretStatus::Success) {
    const auto secret = _store->Read(item.value);
    status = secret.status;
    if (status == SecretStatus::Success) {
      if (NSString* password = PasswordOf(secret.value); password != nil) return Found(password);
      status = SecretStatus::Decode;
    }
  }
  if (status == SecretStatus::ItemNotFound) return Found([NSNull null]);
  TsLogWarning(@"Could not read password from keychain. (account=%@, error=%d)", account, Code(status));
  return Failed(status);
}

- (NSDictionary*)setPassword:(NSString*)password forAccount:(NSString*)account {
  if (password == nil) return [self deleteItem:[self findAccount:account] ofAccount:account];
  const auto item = FirstOf(_store->FindVisible(TsStdString(_service), TsStdString(account)));
  if (item.status == SecretStatus::Success) return [self modifyItem:item.value password:password account:account];
  if (item.status == SecretStatus::ItemNotFound) return [self addPassword:password account:account];
  // By contract this counts as success.
  TsLogWarning(@"Could not find keychain item. (account=%@, error=%d)", account, Code(item.status));
  return Succeeded();
}

- (NSDictionary*)modifyItem:(const SecretItem&)item password:(NSString*)password account:(NSString*)account {
  const auto length = static_cast<unsigned long>([password length]);
  const SecretStatus status = _store->Replace(item, SecretOf(password));
  if (status == SecretStatus::Success) {
    TsLogInfo(@"Modified password in keychain. (account=%@, passwordLength=%lu)", account, length);
    return Succeeded();
  }
  TsLogWarning(@"Could not modify keychain item. (account=%@, passwordLength=%lu, error=%d)", account, length,
               Code(status));
  return Failed(status);
}

- (NSDictionary*)addPassword:(NSString*)password account:(NSString*)account {
  const auto length = static_cast<unsigned long>([password length]);
  const SecretStatus status = _store->Add(TsStdString(_service), TsStdString(account), SecretOf(password));
  if (status == SecretStatus::Success) {
    TsLogInfo(@"Added password to keychain. (account=%@, passwordLength=%lu)", account, length);
    return Succeeded();
  }
  TsLogWarning(@"Could not add password to keychain. (account=%@, passwordLength=%lu, error=%d)", account, length,
               Code(status));
  return Failed(status);
}

- (NSDictionary*)deleteItem:(const platform::SecretResult<SecretItem>&)item ofAccount:(NSString*)account {
  if (item.status != SecretStatus::Success) {
    TsLogError(@"Could not find keychain item in order to delete it. (account=%@, error=%d)", account,
               Code(item.status));
    return Failed(item.status);
  }
  const SecretStatus status = _store->Remove(item.value);
  if (status == SecretStatus::Success) {
    TsLogInfo(@"Deleted password from keychain. (account=%@)", account);
  } else {
    TsLogWarning(@"Could not delete keychain item. (account=%@, error=%d)", account, Code(status));
  }
  return Succeeded();
}

- (NSSet*)allAccounts {
  const auto items = _store->Find(TsStdString(_service), std::nullopt);
  if (items.status == SecretStatus::ItemNotFound) return [NSSet set];
  SecretStatus status = items.status;
  if (status == SecretStatus::Success) {
    const auto accounts = _store->Accounts(items.value);
    status = accounts.status;
    if (status == SecretStatus::Success) {
      NSMutableSet* names = [NSMutableSet setWithCapacity:accounts.value.size()];
      for (const auto& account : accounts.value) {
        if (account) [names addObject:TsNewString(*account)];
      }
      return names;
    }
  }
  TsLogWarning(@"Error while querying all accounts in Keychain. (error=%@)", TsNSString(platform::Message(status)));
  return nil;
}

- (BOOL)removePasswordForAccount:(NSString*)account {
  const auto item = [self findAccount:account];
  if (item.status != SecretStatus::Success || _store->Remove(item.value) != SecretStatus::Success) return NO;
  [self logRemovalOf:account];
  return YES;
}

- (BOOL)removeAllPasswords {
  const std::string service = TsStdString(_service);
  // Repeat for items that are added meanwhile.
  for (;;) {
    const auto items = _store->Find(service, std::nullopt);
    if (items.status != SecretStatus::Success) return YES;
    const auto accounts = _store->Accounts(items.value);
    for (std::size_t i = 0; i < items.value.size(); ++i) {
      if (_store->Remove(items.value[i]) != SecretStatus::Success) return NO;
      const bool isKnown = i < accounts.value.size() && accounts.value[i];
      [self logRemovalOf:isKnown ? TsNSString(*accounts.value[i]) : @"unknown"];
    }
  }
}

- (void)logRemovalOf:(NSString*)account {
  TsLogInfo(@"Removed keychain entry '%@' (%@).", account, _service.get());
}

@end
