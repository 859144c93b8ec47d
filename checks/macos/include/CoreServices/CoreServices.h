#pragma once

#include <CoreFoundation/CoreFoundation.h>

typedef struct OpaqueLSSharedFileListRef* LSSharedFileListRef;
typedef struct OpaqueLSSharedFileListItemRef* LSSharedFileListItemRef;
typedef struct OpaqueIconRef* IconRef;
using LSRolesMask = UInt32;
enum : LSRolesMask { kLSRolesAll = 0xffffffff };
enum : UInt32 { kLSSharedFileListNoUserInteraction = 1, kLSSharedFileListDoNotMountVolumes = 2 };

#define CHECK_OLD_LIST API_DEPRECATED("", macos(10.5, 10.11))
extern "C" {
CFArrayRef LSCopyAllRoleHandlersForContentType(CFStringRef type, LSRolesMask roles)
    API_DEPRECATED("", macos(10.4, 14.0));
CFArrayRef LSCopyAllHandlersForURLScheme(CFStringRef scheme) API_DEPRECATED("", macos(10.4, 14.0));
CFStringRef LSCopyDefaultRoleHandlerForContentType(CFStringRef type, LSRolesMask roles)
    API_DEPRECATED("", macos(10.4, 14.0));
CFStringRef LSCopyDefaultHandlerForURLScheme(CFStringRef scheme) API_DEPRECATED("", macos(10.4, 14.0));
OSStatus LSSetDefaultHandlerForURLScheme(CFStringRef scheme, CFStringRef identifier)
    API_DEPRECATED("", macos(10.4, 14.0));

extern const CFStringRef kLSSharedFileListSessionLoginItems CHECK_OLD_LIST;
extern const LSSharedFileListItemRef kLSSharedFileListItemBeforeFirst CHECK_OLD_LIST;
LSSharedFileListRef LSSharedFileListCreate(CFAllocatorRef allocator, CFStringRef type,
                                           CFTypeRef options) CHECK_OLD_LIST;
CFArrayRef LSSharedFileListCopySnapshot(LSSharedFileListRef list, UInt32* seed) CHECK_OLD_LIST;
CFURLRef LSSharedFileListItemCopyResolvedURL(LSSharedFileListItemRef item, UInt32 flags,
                                             CFErrorRef* error) CHECK_OLD_LIST;
CFStringRef LSSharedFileListItemCopyDisplayName(LSSharedFileListItemRef item) CHECK_OLD_LIST;
LSSharedFileListItemRef LSSharedFileListInsertItemURL(LSSharedFileListRef list, LSSharedFileListItemRef after,
                                                      CFStringRef name, IconRef icon, CFURLRef url, CFDictionaryRef set,
                                                      CFArrayRef clear) CHECK_OLD_LIST;
OSStatus LSSharedFileListItemRemove(LSSharedFileListRef list, LSSharedFileListItemRef item) CHECK_OLD_LIST;
}
