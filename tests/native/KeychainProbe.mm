#include "KeychainProbe.h"

#import <Foundation/Foundation.h>

#include <chrono>

#include "Base/Ref.h"
#import "Keychain/TsKeyChain.h"
#import "Keychain/TsTransientKeychain.h"
#include "Platform/SecretStore.h"
#include "Probe.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"

namespace platform = tessaro::platform;

namespace {

void Return(ProbeArguments args, NSString* text) {
  v8::Local<v8::String> string;
  if (ToScriptString(args.GetIsolate(), text).ToLocal(&string)) args.GetReturnValue().Set(string);
}

// A store with the deadlines of setDeadlines(), and the keychain of a service in it.
platform::SecretStore::Deadlines& Deadlines() {
  static platform::SecretStore::Deadlines deadlines;
  return deadlines;
}

Ref<TsKeychain> Keychain(v8::Local<v8::Value> service) {
  static const auto store = std::make_unique<platform::SecretStore>(Deadlines());
  return Adopt([[TsKeychain alloc] initWithService:convertToNSString(service) store:*store]);
}

std::chrono::milliseconds Milliseconds(v8::Local<v8::Value> value) {
  return std::chrono::milliseconds(value.As<v8::Int32>()->Value());
}

// Before the first use of any other function here.
void setDeadlines(ProbeArguments args) { Deadlines() = {Milliseconds(args[0]), Milliseconds(args[1])}; }

void serviceName(ProbeArguments args) { Return(args, [[TsKeychain sharedInstance] service]); }

void get(ProbeArguments args) {
  Return(args, TsConvertToJSONString([Keychain(args[0]) passwordForAccount:convertToNSString(args[1])]));
}

void set(ProbeArguments args) {
  NSDictionary* result = [Keychain(args[0]) setPassword:convertToNSString(args[2])
                                             forAccount:convertToNSString(args[1])];
  Return(args, TsConvertToJSONString(result));
}

void remove(ProbeArguments args) {
  args.GetReturnValue().Set([Keychain(args[0]) removePasswordForAccount:convertToNSString(args[1])] != NO);
}

void removeAll(ProbeArguments args) { args.GetReturnValue().Set([Keychain(args[0]) removeAllPasswords] != NO); }

void accounts(ProbeArguments args) {
  NSSet* names = [Keychain(args[0]) allAccounts];
  if (names == nil) return args.GetReturnValue().SetNull();
  Return(args, TsConvertToJSONString([[names allObjects] sortedArrayUsingSelector:@selector(compare:)]));
}

void setTransient(ProbeArguments args) {
  [[TsTransientKeychain sharedInstance] setPassword:convertToNSString(args[1]) forAccount:convertToNSString(args[0])];
}

void getTransient(ProbeArguments args) {
  Return(args, [[TsTransientKeychain sharedInstance] passwordForAccount:convertToNSString(args[0])]);
}

void countTransient(ProbeArguments args) {
  args.GetReturnValue().Set(static_cast<int>([[[TsTransientKeychain sharedInstance] passwordsByAccount] count]));
}

}  // namespace

void AttachKeychainProbe(v8::Local<v8::Object> exports) {
  PROBE(setDeadlines);
  PROBE(serviceName);
  PROBE(get);
  PROBE(set);
  PROBE(remove);
  PROBE(removeAll);
  PROBE(accounts);
  PROBE(setTransient);
  PROBE(getTransient);
  PROBE(countTransient);
}
