#import "Shortcuts/MASShortcut.h"

#include "Base/Ref.h"
#import "Extensions/NSEvent+TsKeyboard.h"
#include "Platform/Cocoa.h"
#include "Platform/KeyboardLayout.h"
#include "Shortcuts/ShortcutKeys.h"

NSString* const MASDictionaryTransformerName = @"MASDictionaryTransformer";

namespace {

NSString* const kKeyCode = @"keyCode";
NSString* const kModifierFlags = @"modifierFlags";

struct Modifier {
  NSUInteger flag;
  NSString* symbol;
};

// In the order of display.
const Modifier kModifiers[] = {
    {kTsControl, @"⌃"},
    {kTsOption, @"⌥"},
    {kTsShift, @"⇧"},
    {kTsCommand, @"⌘"},
};

constexpr NSUInteger kModifierMask = kTsControl | kTsOption | kTsShift | kTsCommand;

id OrEmpty(NSString* text) { return text != nil ? text : @""; }

}  // namespace

@implementation MASShortcut

+ (instancetype)shortcutWithEvent:(NSEvent*)event {
  const bool hasKey = [event type] == kTsKeyDown;
  return [self shortcutWithKeyCode:hasKey ? [event ts_virtualKeyCode] : tessaro::platform::kNoVirtualKey
                     modifierFlags:[event modifierFlags]];
}

+ (instancetype)shortcutWithKeyCode:(unsigned short)keyCode modifierFlags:(NSUInteger)modifierFlags {
  return [[[self alloc] initWithKeyCode:keyCode modifierFlags:modifierFlags] autorelease];
}

- (instancetype)initWithKeyCode:(unsigned short)keyCode modifierFlags:(NSUInteger)modifierFlags {
  self = [super init];
  if (self == nil) return nil;
  _keyCode = keyCode;
  _modifierFlags = modifierFlags & kModifierMask;
  return self;
}

- (unsigned short)keyCode {
  return _keyCode;
}

- (NSUInteger)modifierFlags {
  return _modifierFlags;
}

- (NSString*)keyCodeString {
  return OrEmpty(NameOfKey(_keyCode));
}

- (NSString*)keyEquivalent {
  return OrEmpty(KeyEquivalentOfKey(_keyCode));
}

- (NSString*)modifierFlagsString {
  NSMutableString* symbols = [NSMutableString string];
  for (const auto& [flag, symbol] : kModifiers) {
    if (_modifierFlags & flag) [symbols appendString:symbol];
  }
  return symbols;
}

- (NSString*)description {
  return [[self modifierFlagsString] stringByAppendingString:[self keyCodeString]];
}

- (BOOL)isEqual:(id)other {
  MASShortcut* shortcut = As<MASShortcut>(other);
  return shortcut != nil && [shortcut keyCode] == _keyCode && [shortcut modifierFlags] == _modifierFlags;
}

- (NSUInteger)hash {
  return _keyCode ^ _modifierFlags;
}

- (id)copyWithZone:(NSZone*)zone {
  return [self retain];
}

+ (BOOL)supportsSecureCoding {
  return YES;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
  return [self initWithKeyCode:static_cast<unsigned short>([coder decodeIntegerForKey:kKeyCode])
                 modifierFlags:static_cast<NSUInteger>([coder decodeIntegerForKey:kModifierFlags])];
}

- (void)encodeWithCoder:(NSCoder*)coder {
  [coder encodeInteger:_keyCode forKey:kKeyCode];
  [coder encodeInteger:static_cast<NSInteger>(_modifierFlags) forKey:kModifierFlags];
}

@end

@implementation MASDictionaryTransformer

+ (BOOL)allowsReverseTransformation {
  return YES;
}

+ (Class)transformedValueClass {
  return [MASShortcut class];
}

- (id)transformedValue:(id)value {
  NSNumber* keyCode = As<NSNumber>([As<NSDictionary>(value) objectForKey:kKeyCode]);
  NSNumber* modifierFlags = As<NSNumber>([As<NSDictionary>(value) objectForKey:kModifierFlags]);
  if (keyCode == nil || modifierFlags == nil) return nil;
  return [MASShortcut shortcutWithKeyCode:[keyCode unsignedShortValue]
                            modifierFlags:[modifierFlags unsignedIntegerValue]];
}

- (id)reverseTransformedValue:(id)value {
  MASShortcut* shortcut = As<MASShortcut>(value);
  if (shortcut == nil) return nil;
  return @{
    kKeyCode : [NSNumber numberWithUnsignedShort:[shortcut keyCode]],
    kModifierFlags : [NSNumber numberWithUnsignedInteger:[shortcut modifierFlags]],
  };
}

@end
