#pragma once

#include <CoreFoundation/CoreFoundation.h>

typedef struct __TISInputSource* TISInputSourceRef;
struct UCKeyboardLayout;
typedef struct OpaqueEventRef* EventRef;
typedef struct OpaqueEventTargetRef* EventTargetRef;
typedef struct OpaqueEventHandlerRef* EventHandlerRef;
typedef struct OpaqueEventHandlerCallRef* EventHandlerCallRef;
typedef struct OpaqueEventHotKeyRef* EventHotKeyRef;
using EventHandlerUPP = OSStatus (*)(EventHandlerCallRef call, EventRef event, void* data);

struct EventTypeSpec {
  OSType eventClass;
  UInt32 eventKind;
};
struct EventHotKeyID {
  OSType signature;
  UInt32 id;
};

enum : OSType { kEventClassKeyboard = 'keyb', kEventParamDirectObject = '----', typeEventHotKeyID = 'hkid' };
enum : UInt32 { kEventHotKeyPressed = 5 };
enum : OSStatus { eventNotHandledErr = -9874 };
enum : UInt16 { kUCKeyActionDisplay = 3 };
enum : OptionBits { kUCKeyTranslateNoDeadKeysMask = 1 };

extern "C" {
extern const CFStringRef kTISPropertyUnicodeKeyLayoutData;
extern const CFStringRef kHISymbolicHotKeyCode;
extern const CFStringRef kHISymbolicHotKeyModifiers;
extern const CFStringRef kHISymbolicHotKeyEnabled;

TISInputSourceRef TISCopyCurrentASCIICapableKeyboardLayoutInputSource(void);
void* TISGetInputSourceProperty(TISInputSourceRef source, CFStringRef key);
UInt8 LMGetKbdType(void);
OSStatus UCKeyTranslate(const UCKeyboardLayout* layout, UInt16 key, UInt16 action, UInt32 modifiers, UInt32 keyboard,
                        OptionBits options, UInt32* deadKeys, UniCharCount most, UniCharCount* length,
                        UniChar* characters);

EventTargetRef GetEventDispatcherTarget(void);
OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler, ItemCount count,
                             const EventTypeSpec* types, void* data, EventHandlerRef* reference);
OSStatus GetEventParameter(EventRef event, OSType name, OSType type, OSType* actualType, ByteCount size,
                           ByteCount* actualSize, void* data);
OSStatus RegisterEventHotKey(UInt32 code, UInt32 modifiers, EventHotKeyID identifier, EventTargetRef target,
                             OptionBits options, EventHotKeyRef* reference);
OSStatus UnregisterEventHotKey(EventHotKeyRef reference);
OSStatus CopySymbolicHotKeys(CFArrayRef* keys);
}
