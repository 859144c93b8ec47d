#pragma once

#include <MacTypes.h>
#include <objc/objc.h>

#define CF_ENUM(type, name) \
  enum name : type;         \
  enum name : type

using CFTypeID = unsigned long;
using CFIndex = long;
using CFTimeInterval = double;
using CFOptionFlags = unsigned long;
using CFHashCode = unsigned long;
using CFStringEncoding = UInt32;
using CGFloat = double;

using CFTypeRef = const void*;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef struct __CFString* CFMutableStringRef;
typedef const struct __CFArray* CFArrayRef;
typedef struct __CFArray* CFMutableArrayRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef struct __CFDictionary* CFMutableDictionaryRef;
typedef const struct __CFData* CFDataRef;
typedef struct __CFData* CFMutableDataRef;
typedef const struct __CFNumber* CFNumberRef;
typedef const struct __CFBoolean* CFBooleanRef;
typedef const struct __CFURL* CFURLRef;
typedef const struct __CFUUID* CFUUIDRef;
typedef struct __CFError* CFErrorRef;
typedef struct __CFBundle* CFBundleRef;
typedef struct __CFRunLoop* CFRunLoopRef;
typedef struct __CFNotificationCenter* CFNotificationCenterRef;

struct CFRange {
  CFIndex location;
  CFIndex length;
};
inline CFRange CFRangeMake(CFIndex location, CFIndex length) { return {location, length}; }

enum : CFStringEncoding {
  kCFStringEncodingUTF16 = 0x0100,
  kCFStringEncodingISOLatin1 = 0x0201,
  kCFStringEncodingUTF8 = 0x08000100,
};
enum CFNumberType : CFIndex {
  kCFNumberSInt32Type = 3,
  kCFNumberSInt64Type = 4,
  kCFNumberIntType = 9,
  kCFNumberDoubleType = 13,
};
enum CFRunLoopRunResult : SInt32 { kCFRunLoopRunFinished = 1, kCFRunLoopRunHandledSource = 4 };

struct CFDictionaryKeyCallBacks;
struct CFDictionaryValueCallBacks;
struct CFArrayCallBacks;

extern "C" {
extern const CFAllocatorRef kCFAllocatorDefault;
extern const CFAllocatorRef kCFAllocatorNull;
extern const CFAllocatorRef kCFAllocatorMalloc;
extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;
extern const CFArrayCallBacks kCFTypeArrayCallBacks;
extern const CFStringRef kCFRunLoopDefaultMode;

CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);
CFTypeID CFStringGetTypeID(void);
CFTypeID CFArrayGetTypeID(void);
CFTypeID CFDataGetTypeID(void);
CFTypeID CFDictionaryGetTypeID(void);
CFTypeID CFNumberGetTypeID(void);
CFTypeID CFBooleanGetTypeID(void);

CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation);
CFStringRef CFStringCreateWithBytesNoCopy(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length,
                                          CFStringEncoding encoding, Boolean isExternalRepresentation,
                                          CFAllocatorRef contentsDeallocator);
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* characters, CFIndex length);
CFIndex CFStringGetLength(CFStringRef string);
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternalRepresentation, UInt8* buffer, CFIndex length, CFIndex* used);
const char* CFStringGetCStringPtr(CFStringRef string, CFStringEncoding encoding);
const UniChar* CFStringGetCharactersPtr(CFStringRef string);
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);

CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex count,
                         const CFArrayCallBacks* callbacks);
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks* keyCallbacks,
                                   const CFDictionaryValueCallBacks* valueCallbacks);
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks* keyCallbacks,
                                                 const CFDictionaryValueCallBacks* valueCallbacks);
void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key, const void* value);
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);

CFStringRef CFRunLoopCopyCurrentMode(CFRunLoopRef loop);
CFRunLoopRef CFRunLoopGetMain(void);
CFRunLoopRunResult CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds, Boolean returnsAfterSource);

CFDataRef CFDataCreateWithBytesNoCopy(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length,
                                      CFAllocatorRef deallocator);
CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);
CFMutableDataRef CFDataCreateMutable(CFAllocatorRef allocator, CFIndex capacity);
const UInt8* CFDataGetBytePtr(CFDataRef data);
CFIndex CFDataGetLength(CFDataRef data);

CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);
Boolean CFBooleanGetValue(CFBooleanRef boolean);

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8* path, CFIndex length,
                                                 Boolean isDirectory);
CFURLRef CFURLCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length, CFStringEncoding encoding,
                              CFURLRef base);
Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolvesAgainstBase, UInt8* buffer, CFIndex length);

CFBundleRef CFBundleGetMainBundle(void);
CFStringRef CFBundleGetIdentifier(CFBundleRef bundle);
}
