#include "Platform/Linux/Keyboard/ModifierKeys.h"

#import <Foundation/Foundation.h>

namespace tessaro::platform {

namespace {

// One of a modifier's keys: the user default with the user's choice, and GNUstep's own choice, nil for no key.
struct Choice {
  Modifier modifier;
  NSString* defaultsKey;
  NSString* usual;
};

const Choice kChoices[] = {
    {Modifier::Command, @"GSFirstCommandKey", @"Alt_L"},     {Modifier::Command, @"GSSecondCommandKey", nil},
    {Modifier::Option, @"GSFirstAlternateKey", @"Alt_R"},    {Modifier::Option, @"GSSecondAlternateKey", nil},
    {Modifier::Control, @"GSFirstControlKey", @"Control_L"}, {Modifier::Control, @"GSSecondControlKey", @"Control_R"},
};

}  // namespace

std::vector<std::string> ModifierKeyNames(Modifier modifier) noexcept {
  @autoreleasepool {
    std::vector<std::string> names;
    for (const Choice& choice : kChoices) {
      NSString* chosen = [[NSUserDefaults standardUserDefaults] stringForKey:choice.defaultsKey];
      NSString* name = chosen != nil ? chosen : choice.usual;
      // GNUstep's name for no key.
      const bool isNone = [name length] == 0 || [name isEqualToString:@"NoSymbol"];
      if (choice.modifier == modifier && !isNone) names.emplace_back([name UTF8String]);
    }
    return names;
  }
}

}  // namespace tessaro::platform
