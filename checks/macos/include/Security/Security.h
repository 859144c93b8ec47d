#pragma once

#include <CoreFoundation/CoreFoundation.h>

extern "C" {
extern const CFStringRef kSecClass;
extern const CFStringRef kSecClassGenericPassword;
extern const CFStringRef kSecAttrService;
extern const CFStringRef kSecAttrAccount;
extern const CFStringRef kSecValueData;
extern const CFStringRef kSecValuePersistentRef;
extern const CFStringRef kSecReturnData;
extern const CFStringRef kSecReturnAttributes;
extern const CFStringRef kSecReturnPersistentRef;
extern const CFStringRef kSecMatchLimit;
extern const CFStringRef kSecMatchLimitOne;
extern const CFStringRef kSecMatchLimitAll;

OSStatus SecItemCopyMatching(CFDictionaryRef query, CFTypeRef* result);
OSStatus SecItemAdd(CFDictionaryRef attributes, CFTypeRef* result);
OSStatus SecItemUpdate(CFDictionaryRef query, CFDictionaryRef attributes);
OSStatus SecItemDelete(CFDictionaryRef query);
CFStringRef SecCopyErrorMessageString(OSStatus status, void* reserved);
}
enum : OSStatus { errSecSuccess = 0, errSecDuplicateItem = -25299, errSecItemNotFound = -25300 };
