#import "Extensions/NSEvent+TsKeyboard.h"

#import <Foundation/Foundation.h>

#include "Platform/KeyboardLayout.h"

@implementation NSEvent (TsKeyboard)

- (BOOL)ts_isKeyboardEvent {
  const NSUInteger type = [self type];
  return type == kTsKeyDown || type == kTsKeyUp || type == kTsFlagsChanged;
}

- (BOOL)ts_holdsModifier:(NSUInteger)modifier {
  return ([self modifierFlags] & modifier) != 0;
}

- (unsigned short)ts_virtualKeyCode {
  return [self ts_isKeyboardEvent] ? tessaro::platform::VirtualKeyCode([self keyCode]) : 0;
}

- (BOOL)ts_hasNoLocation {
  return NSEqualPoints([self locationInWindow], NSZeroPoint);
}

- (NSMutableDictionary*)ts_modifierDescription {
  const auto truth = [](bool value) { return [NSNumber numberWithBool:value]; };
  const auto modifier = [&](NSUInteger flag) { return truth([self ts_holdsModifier:flag]); };
  const bool isKeyboard = [self ts_isKeyboardEvent];
  return [NSMutableDictionary dictionaryWithObjectsAndKeys:truth(!isKeyboard), @"mouse?",                 //
                                                           truth(isKeyboard), @"keyboard?",               //
                                                           modifier(kTsFunction), @"function-modifier?",  //
                                                           modifier(kTsControl), @"control-modifier?",    //
                                                           modifier(kTsOption), @"option-modifier?",      //
                                                           modifier(kTsCommand), @"command-modifier?",    //
                                                           modifier(kTsShift), @"shift-modifier?", nil];
}

@end
