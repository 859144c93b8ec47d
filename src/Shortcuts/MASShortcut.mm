#import "Shortcuts/MASShortcut.h"

#include <algorithm>
#include <iterator>

#include "Base/TsString.h"
#import "Extensions/NSEvent+TsKeyboard.h"
#include "Platform/Cocoa.h"
#include "Platform/KeyboardLayout.h"

namespace {

struct NamedKey {
  unsigned short keyCode;
  unichar equivalent;
  NSString* name;
};

const NamedKey kNamedKeys[] = {
    {36, '\r', @"↩"},
    {48, '\t', @"⇥"},
    {49, ' ', @"Space"},
    {51, NSBackspaceCharacter, @"⌫"},
    {53, 0x1b, @"⎋"},
    {71, NSClearLineFunctionKey, @"⌧"},
    {76, NSEnterCharacter, @"⌅"},
    {110, NSMenuFunctionKey, @"▤"},
    {114, NSHelpFunctionKey, @"Help"},
    {115, NSHomeFunctionKey, @"↖"},
    {116, NSPageUpFunctionKey, @"⇞"},
    {117, NSDeleteFunctionKey, @"⌦"},
    {119, NSEndFunctionKey, @"↘"},
    {121, NSPageDownFunctionKey, @"⇟"},
    {123, NSLeftArrowFunctionKey, @"←"},
    {124, NSRightArrowFunctionKey, @"→"},
    {125, NSDownArrowFunctionKey, @"↓"},
    {126, NSUpArrowFunctionKey, @"↑"},
};

struct KeypadKey {
  unsigned short keyCode;
  unichar character;
};

constexpr KeypadKey kKeypadKeys[] = {
    {65, '.'}, {67, '*'}, {69, '+'}, {75, '/'}, {78, '-'}, {81, '='}, {82, '0'}, {83, '1'},
    {84, '2'}, {85, '3'}, {86, '4'}, {87, '5'}, {88, '6'}, {89, '7'}, {91, '8'}, {92, '9'},
};

// From F1 on.
constexpr unsigned short kFunctionKeys[] = {122, 120, 99,  118, 96,  97,  98, 100, 101, 109,
                                            103, 111, 105, 107, 113, 106, 64, 79,  80,  90};

template <typename Key, std::size_t count>
const Key* Find(const Key (&keys)[count], unsigned short keyCode) {
  const auto* const found =
      std::find_if(std::begin(keys), std::end(keys), [=](const Key& each) { return each.keyCode == keyCode; });
  return found == std::end(keys) ? nullptr : found;
}

// Counted from 0; the last value is the number of keys.
std::ptrdiff_t FunctionKeyIndex(unsigned short keyCode) {
  return std::find(std::begin(kFunctionKeys), std::end(kFunctionKeys), keyCode) - std::begin(kFunctionKeys);
}

NSString* StringOf(unichar character) { return [NSString stringWithCharacters:&character length:1]; }

NSString* TypedCharacter(unsigned short keyCode) {
  const char16_t character = tessaro::platform::CharacterOnKey(keyCode);
  return character != 0 ? StringOf(character) : nil;
}

// "ß" has no capital of its own.
NSString* Capital(NSString* character) {
  NSString* capital = [character uppercaseString];
  return [capital length] == [character length] ? capital : character;
}

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

}  // namespace

NSString* NameOfKey(unsigned short keyCode) {
  if (const NamedKey* key = Find(kNamedKeys, keyCode)) return key->name;
  if (const KeypadKey* key = Find(kKeypadKeys, keyCode))
    return [NSString stringWithFormat:@"Keypad %C", key->character];
  if (IsFunctionKey(keyCode))
    return [NSString stringWithFormat:@"F%d", static_cast<int>(FunctionKeyIndex(keyCode)) + 1];
  return Capital(TypedCharacter(keyCode));
}

NSString* KeyEquivalentOfKey(unsigned short keyCode) {
  if (const NamedKey* key = Find(kNamedKeys, keyCode)) return StringOf(key->equivalent);
  if (const KeypadKey* key = Find(kKeypadKeys, keyCode)) return StringOf(key->character);
  if (IsFunctionKey(keyCode)) return StringOf(static_cast<unichar>(NSF1FunctionKey + FunctionKeyIndex(keyCode)));
  return TypedCharacter(keyCode);
}

bool IsFunctionKey(unsigned short keyCode) {
  return FunctionKeyIndex(keyCode) < static_cast<std::ptrdiff_t>(std::size(kFunctionKeys));
}

bool IsTypingKey(unsigned short keyCode) { return Find(kNamedKeys, keyCode) == nullptr && !IsFunctionKey(keyCode); }

NSString* const MASDictionaryTransformerName = @"MASDictionaryTransformer";

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
  return TsOrEmpty(NameOfKey(_keyCode));
}

- (NSString*)keyEquivalent {
  return TsOrEmpty(KeyEquivalentOfKey(_keyCode));
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
