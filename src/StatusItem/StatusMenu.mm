#include "StatusItem/StatusMenu.h"

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsString.h"
#import "Extensions/NSString+TsFormat.h"
#import "Extensions/TsColors.h"
#import "StatusItem/TsStatusItemController.h"

namespace {

// ---- Badges

constexpr CGFloat kBadgeSize = 16;
constexpr CGFloat kBadgeTextHeight = 14.5;
constexpr CGFloat kBadgeTextSize = 9;
// Far more badges than one menu shows.
constexpr NSUInteger kMostBadgesKept = 256;
constexpr NSUInteger kMostCounted = 99;

NSDictionary* BadgeTextAttributes() {
  auto paragraph = Adopt([[NSMutableParagraphStyle alloc] init]);
  [paragraph setAlignment:NSCenterTextAlignment];
  return @{
    NSFontAttributeName : [NSFont menuBarFontOfSize:kBadgeTextSize],
    NSParagraphStyleAttributeName : paragraph.get(),
    NSForegroundColorAttributeName : [NSColor whiteColor],
    NSFontWeightTrait : [NSNumber numberWithInt:1],
  };
}

Ref<NSImage> DrawBadge(NSColor* color, NSString* text) {
  auto image = Adopt([[NSImage alloc] initWithSize:NSMakeSize(kBadgeSize, kBadgeSize)]);
  [image lockFocus];
  [color set];
  [[NSBezierPath bezierPathWithOvalInRect:NSMakeRect(0, 0, kBadgeSize, kBadgeSize)] fill];
  if (text != nil) {
    [text drawInRect:NSMakeRect(0, 0, kBadgeSize, kBadgeTextHeight) withAttributes:BadgeTextAttributes()];
  }
  [image unlockFocus];
  return image;
}

// A disc in `color`, with `text` on it unless that is nil. Cached: drawing takes far longer than the rest of a row.
NSImage* Badge(NSColor* color, NSString* text) {
  static Forever<Ref<NSMutableDictionary>> kept(Adopt([[NSMutableDictionary alloc] init]));
  NSMutableDictionary* badges = *kept;
  NSArray* key = [NSArray arrayWithObjects:TsOrEmpty(text), color, nil];
  if (NSImage* badge = [badges objectForKey:key]) return badge;
  if ([badges count] == kMostBadgesKept) [badges removeAllObjects];
  auto badge = DrawBadge(color, text);
  [badges setObject:badge forKey:key];
  return badge.Autoreleased();
}

// ---- Titles

constexpr NSUInteger kLongestTitle = 60;

NSString* Shortened(NSString* title) {
  if ([title length] <= kLongestTitle) return title;
  return [[title ts_prefixOfLength:kLongestTitle] stringByAppendingString:@"..."];
}

// Empty for nil. Looking up the font costs more than the rest of a row.
NSAttributedString* SmallTitle(NSString* title) {
  static Forever<Ref<NSDictionary>> smallType(
      Retain(@{NSFontAttributeName : [NSFont menuBarFontOfSize:[NSFont smallSystemFontSize]]}));
  return Adopt([[NSAttributedString alloc] initWithString:TsOrEmpty(title) attributes:*smallType]).Autoreleased();
}

}  // namespace

// An account's row, with a badge in the account's colour: "!" while the account is in error, else its unread count.
@interface TsAccountStatusMenuItem : NSMenuItem {
  Ref<NSColor> _color;
  NSUInteger _count;
  BOOL _isInError;
}

@property(nonatomic, copy) NSColor* color;
@property(nonatomic) NSUInteger count;
@property(nonatomic) BOOL isInError;

// Redraws the badge.
- (void)updateImage;

@end

@implementation TsAccountStatusMenuItem

@synthesize count = _count;
@synthesize isInError = _isInError;

- (instancetype)initWithTitle:(NSString*)title
                        color:(NSColor*)color
                       action:(SEL)action
                keyEquivalent:(NSString*)keyEquivalent {
  self = [super initWithTitle:title action:action keyEquivalent:keyEquivalent];
  if (self == nil) return nil;
  [self setColor:color];
  [self setCount:0];
  [self setIsInError:NO];
  return self;
}

- (NSColor*)color {
  return _color;
}

- (void)setColor:(NSColor*)color {
  if (color == _color) return;
  _color = Copy(color);
  [self updateImage];
}

- (void)setCount:(NSUInteger)count {
  _count = count;
  [self updateImage];
}

- (void)setIsInError:(BOOL)isInError {
  _isInError = isInError;
  [self updateImage];
}

- (NSString*)badgeText {
  if (_isInError) return @"!";
  if (_count == 0 || _count > kMostCounted) return nil;
  return [NSString stringWithFormat:@"%ld", static_cast<long>(_count)];
}

- (void)updateImage {
  [self setImage:Badge(_color, [self badgeText])];
}

@end

// An unread message's row: in small type, its title cut to 60 characters and "...".
@interface TsStatusItemMessageMenuItem : NSMenuItem
@end

@implementation TsStatusItemMessageMenuItem

- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)keyEquivalent {
  self = [super initWithTitle:@"" action:action keyEquivalent:keyEquivalent];
  if (self) [self setAttributedTitle:SmallTitle(Shortened(title))];
  return self;
}

@end

// A row in small type.
@interface TsStatusItemSmallMenuItem : NSMenuItem
@end

@implementation TsStatusItemSmallMenuItem

- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)keyEquivalent {
  self = [super initWithTitle:@"" action:action keyEquivalent:keyEquivalent];
  if (self) [self setAttributedTitle:SmallTitle(title)];
  return self;
}

@end

namespace {

template <typename Expected>
Expected* Value(NSDictionary* dictionary, NSString* key) {
  return As<Expected>([dictionary objectForKey:key]);
}

// For an empty key NSBundle returns the key itself.
NSString* Localized(NSString* text) { return [text length] == 0 ? @"" : NSLocalizedString(text, nil); }

struct Account {
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

class StatusMenuBuilder {
 public:
  StatusMenuBuilder(NSMenu* menu, id target, NSDictionary* contents)
      : menu_(menu), target_(target), translations_(Value<NSDictionary>(contents, @"translations")) {}

  void AddCommands(bool doNotDisturb) const {
    const auto command = [this](NSString* key, SEL action) {
      return Adopt([[NSMenuItem alloc] initWithTitle:Localized(Translation(key)) action:action keyEquivalent:@""]);
    };
    auto quiet = command(@"do-not-disturb?", @selector(toggleDoNotDisturb:));
    [quiet setState:doNotDisturb ? NSOnState : NSOffState];

    Add(command(@"get-new-mail", @selector(checkForNewMessages:)), nil);
    Add(quiet, nil);
    Add(command(@"compose-new-message", @selector(composeNewMessage:)), nil);
  }

  void AddSeparator() const { [menu_ addItem:[NSMenuItem separatorItem]]; }

  void AddCompactAccount(const Account& account, bool doNotDisturb) const {
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

  void AddFullAccount(const Account& account, bool doNotDisturb) const {
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

 private:
  [[nodiscard]] NSString* CompactTitle(const Account& account, bool doNotDisturb) const {
    if (account.requiresSignIn) return [Translation(@"sign-in-format") ts_formatWithText:account.label];
    if (doNotDisturb || account.count == 0) return [Translation(@"open-format") ts_formatWithText:account.label];
    return [Translation(@"open-with-counter-format") ts_formatWithText:account.label
                                                                number:static_cast<NSInteger>(account.count)];
  }

  void AddMessage(NSDictionary* message) const {
    if (message == nil) return;
    NSString* title = [NSString
        stringWithFormat:@"%@ - %@", Value<NSString>(message, @"from-line"), Value<NSString>(message, @"subject")];
    auto item = Adopt([[TsStatusItemMessageMenuItem alloc] initWithTitle:title
                                                                  action:@selector(openMessage:)
                                                           keyEquivalent:@""]);
    [item setToolTip:Value<NSString>(message, @"snippet")];
    Add(item, [message objectForKey:@"unique-id"]);
  }

  // Complete items before adding them: a menu may ask its delegate for an update when one of its items changes.
  void Add(NSMenuItem* item, id identifier) const {
    [item setTarget:target_];
    [item setRepresentedObject:identifier];
    [menu_ addItem:item];
  }

  [[nodiscard]] NSString* Translation(NSString* key) const { return Value<NSString>(translations_, key); }

  NSMenu* menu_;
  id target_;
  NSDictionary* translations_;
};

}  // namespace

void BuildStatusMenu(NSMenu* menu, id target, NSDictionary* contents, StatusMenuForm form, bool doNotDisturb) {
  const StatusMenuBuilder builder(menu, target, contents);
  builder.AddCommands(doNotDisturb);
  if (form == StatusMenuForm::Compact) builder.AddSeparator();
  for (id value in Value<NSArray>(contents, @"accounts")) {
    NSDictionary* account = As<NSDictionary>(value);
    if (account == nil) continue;
    // The rows of the next account take the memory of what this one leaves behind.
    @autoreleasepool {
      if (form == StatusMenuForm::Compact) {
        builder.AddCompactAccount(Account(account), doNotDisturb);
      } else {
        builder.AddFullAccount(Account(account), doNotDisturb);
      }
    }
  }
}
