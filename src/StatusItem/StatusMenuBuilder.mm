#include "StatusItem/StatusMenuBuilder.h"

#import "Extensions/NSColor+TsHex.h"
#import "Extensions/NSString+TsFormat.h"
#import "StatusItem/TsAccountStatusMenuItem.h"
#import "StatusItem/TsStatusItemController.h"
#import "StatusItem/TsStatusItemMessageMenuItem.h"
#import "StatusItem/TsStatusItemSmallMenuItem.h"

namespace {

template <typename Expected>
Expected* Value(NSDictionary* dictionary, NSString* key) {
  return As<Expected>([dictionary objectForKey:key]);
}

// For an empty key NSBundle returns the key itself.
NSString* Localized(NSString* text) { return [text length] == 0 ? @"" : NSLocalizedString(text, nil); }

}  // namespace

struct StatusMenuBuilder::Account {
  explicit Account(NSDictionary* account)
      : label(Value<NSString>(account, @"label")),
        identifier([account objectForKey:@"id"]),
        count([Value<NSNumber>(account, @"unread-counter-value") unsignedIntegerValue]),
        color([NSColor ts_colorWithHexColorString:Value<NSString>(account, @"hex-color")]),
        requiresSignIn([Value<NSNumber>(account, @"requires-oauth?") boolValue]),
        messages(Value<NSArray>(account, @"unread-messages")) {}

  NSString* label;
  id identifier;
  NSUInteger count;
  NSColor* color;
  bool requiresSignIn;
  NSArray* messages;
};

StatusMenuBuilder::StatusMenuBuilder(NSMenu* menu, id target, NSDictionary* contents)
    : menu_(menu),
      target_(target),
      accounts_(Value<NSArray>(contents, @"accounts")),
      translations_(Value<NSDictionary>(contents, @"translations")) {}

void StatusMenuBuilder::Build(StatusMenuForm form, bool doNotDisturb) const {
  AddCommands(doNotDisturb);
  if (form == StatusMenuForm::Compact) AddSeparator();
  for (id value in accounts_) {
    NSDictionary* account = As<NSDictionary>(value);
    if (account == nil) continue;
    // The rows of the next account take the memory of what this one leaves behind.
    @autoreleasepool {
      if (form == StatusMenuForm::Compact) {
        AddCompactAccount(Account(account), doNotDisturb);
      } else {
        AddFullAccount(Account(account), doNotDisturb);
      }
    }
  }
}

void StatusMenuBuilder::AddCommands(bool doNotDisturb) const {
  const auto command = [this](NSString* key, SEL action) {
    return Adopt([[NSMenuItem alloc] initWithTitle:Localized(Translation(key)) action:action keyEquivalent:@""]);
  };
  auto quiet = command(@"do-not-disturb?", @selector(toggleDoNotDisturb:));
  [quiet setState:doNotDisturb ? NSOnState : NSOffState];

  Add(command(@"get-new-mail", @selector(checkForNewMessages:)), nil);
  Add(quiet, nil);
  Add(command(@"compose-new-message", @selector(composeNewMessage:)), nil);
}

void StatusMenuBuilder::AddCompactAccount(const Account& account, bool doNotDisturb) const {
  const SEL action = account.requiresSignIn ? @selector(loginOAuth:) : @selector(showTabViewItem:);
  auto item = Adopt([[TsAccountStatusMenuItem alloc] initWithTitle:CompactTitle(account, doNotDisturb)
                                                             color:account.color
                                                            action:action
                                                     keyEquivalent:@""]);
  if (account.requiresSignIn) {
    [item setIsInError:YES];
  } else {
    [item setCount:account.count];
  }
  Add(item, account.identifier);
}

NSString* StatusMenuBuilder::CompactTitle(const Account& account, bool doNotDisturb) const {
  if (account.requiresSignIn) return [Translation(@"sign-in-format") ts_formatWithText:account.label];
  if (doNotDisturb || account.count == 0) return [Translation(@"open-format") ts_formatWithText:account.label];
  return [Translation(@"open-with-counter-format") ts_formatWithText:account.label
                                                              number:static_cast<NSInteger>(account.count)];
}

void StatusMenuBuilder::AddFullAccount(const Account& account, bool doNotDisturb) const {
  AddSeparator();
  auto item = Adopt([[TsAccountStatusMenuItem alloc] initWithTitle:account.label
                                                             color:account.color
                                                            action:@selector(showTabViewItem:)
                                                     keyEquivalent:@""]);
  [item setCount:account.count];
  [item setIsInError:account.requiresSignIn];
  Add(item, account.identifier);
  if (account.requiresSignIn) {
    auto signIn = Adopt([[TsStatusItemSmallMenuItem alloc] initWithTitle:Translation(@"sign-in")
                                                                  action:@selector(loginOAuth:)
                                                           keyEquivalent:@""]);
    return Add(signIn, account.identifier);
  }
  if (doNotDisturb) return;
  for (id message in account.messages) AddMessage(As<NSDictionary>(message));
}

void StatusMenuBuilder::AddMessage(NSDictionary* message) const {
  if (message == nil) return;
  NSString* title = [NSString
      stringWithFormat:@"%@ - %@", Value<NSString>(message, @"from-line"), Value<NSString>(message, @"subject")];
  auto item = Adopt([[TsStatusItemMessageMenuItem alloc] initWithTitle:title
                                                                action:@selector(openMessage:)
                                                         keyEquivalent:@""]);
  [item setToolTip:Value<NSString>(message, @"snippet")];
  Add(item, [message objectForKey:@"unique-id"]);
}

void StatusMenuBuilder::AddSeparator() const { [menu_ addItem:[NSMenuItem separatorItem]]; }

// Complete items before adding them: a menu may ask its delegate for an update when one of its items changes.
void StatusMenuBuilder::Add(NSMenuItem* item, id identifier) const {
  [item setTarget:target_];
  [item setRepresentedObject:identifier];
  [menu_ addItem:item];
}

NSString* StatusMenuBuilder::Translation(NSString* key) const { return Value<NSString>(translations_, key); }
