#include "Platform/Linux/Keyboard/ModifierKeys.h"

#import <Foundation/Foundation.h>

namespace tessaro::platform {

namespace {

// GNUstep's default for a key, and the key where there is no such default.
struct Choice {
  NSString* defaultsKey;
  NSString* usual;
};

struct Choices {
  Choice first;
  Choice second;
};

Choices ChoicesOf(Modifier modifier) {
  switch (modifier) {
    case Modifier::Command:
      return {{@"GSFirstCommandKey", @"Alt_L"}, {@"GSSecondCommandKey", nil}};
    case Modifier::Option:
      return {{@"GSFirstAlternateKey", @"Alt_R"}, {@"GSSecondAlternateKey", nil}};
    case Modifier::Control:
      return {{@"GSFirstControlKey", @"Control_L"}, {@"GSSecondControlKey", @"Control_R"}};
  }
}

void AddName(std::vector<std::string>& names, const Choice& choice) {
  NSString* chosen = [[NSUserDefaults standardUserDefaults] stringForKey:choice.defaultsKey];
  NSString* name = chosen != nil ? chosen : choice.usual;
  // GNUstep's name for no key.
  if ([name length] == 0 || [name isEqualToString:@"NoSymbol"]) return;
  names.emplace_back([name UTF8String]);
}

}  // namespace

std::vector<std::string> ModifierKeyNames(Modifier modifier) noexcept {
  @autoreleasepool {
    const Choices choices = ChoicesOf(modifier);
    std::vector<std::string> names;
    AddName(names, choices.first);
    AddName(names, choices.second);
    return names;
  }
}

}  // namespace tessaro::platform
