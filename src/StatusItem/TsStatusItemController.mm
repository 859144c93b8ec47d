#import "StatusItem/TsStatusItemController.h"

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#import "Extensions/TsColors.h"
#include "Platform/DockMenu.h"
#include "Platform/WindowServer.h"
#include "StatusItem/StatusMenu.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsNotificationObserver.h"

namespace platform = tessaro::platform;

namespace {

constexpr CGFloat kIconLength = 26;
constexpr CGFloat kTitleMargin = 29;
constexpr CGFloat kErrorTitleMargin = 35;

NSString* const kDefaultIcon = @"SB_Default_Template";
NSString* const kErrorIcon = @"SB_InError_Template";
NSString* const kUnreadColor = @"4F8CF8";

NSImage* Tinted(NSImage* image, NSColor* color) {
  NSImage* tinted = [image ts_tintedImageWithColor:color];
  // Template images take the menu bar's colour.
  [tinted setTemplate:NO];
  return tinted;
}

CGFloat TitleWidth(NSString* title) {
  return [title sizeWithAttributes:@{NSFontAttributeName : [NSFont menuBarFontOfSize:0]}].width;
}

NSDictionary* InfoOf(id row, NSString* key) {
  id identifier = [row representedObject];
  return identifier != nil ? @{key : identifier} : @{};
}

NSDictionary* AskScriptForMenu(NSString* type, bool includesMessages) {
  const TsCallbackSlot& script = TsCallback(TsSlot::StatusItemMenuNeedsUpdate);
  if (!script.IsSet()) return @{};
  NSString* json = script.CallForString({type, includesMessages});
  NSError* error = nil;
  if (NSDictionary* menu = As<NSDictionary>(TsConvertFromJSONString(json, &error))) return menu;
  TsLogError(@"Couldn't update status item menu with %@ because of %@", json,
             error != nil ? error : static_cast<id>(@"it is no object"));
  return @{};
}

}  // namespace

@implementation TsStatusItemController

+ (TsStatusItemController*)sharedInstance {
  static Forever<Ref<TsStatusItemController>> shared(Adopt([[TsStatusItemController alloc] init]));
  return *shared;
}

- (instancetype)init {
  self = [super init];
  if (self == nil) return nil;
  _numberOfAccounts = -1;
  NSNotificationCenter* center = [NSNotificationCenter defaultCenter];
  [center addObserver:self
             selector:@selector(preferenceDidChange:)
                 name:NSUserDefaultsDidChangeNotification
               object:nil];
  [center addObserver:self selector:@selector(numberOfAccountsChanged:) name:@"TsNumberOfAccountsChanged" object:nil];
  return self;
}

- (void)dealloc {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  [super dealloc];
}

// ---- Properties

@synthesize hasErrors = _hasErrors;
@synthesize previousDoNotDisturbEnabled = _previousDoNotDisturbEnabled;
@synthesize previousStatusBarItemEnabled = _previousStatusBarItemEnabled;
@synthesize menuNeedsUpdateCallback = _menuNeedsUpdateCallback;
@synthesize numberOfAccounts = _numberOfAccounts;

- (void)setHasErrors:(BOOL)hasErrors {
  if (hasErrors == _hasErrors) return;
  _hasErrors = hasErrors;
  [self updateStatusItemIcon];
}

TS_RETAINED(NSStatusItem, statusItem, StatusItem)

- (NSString*)title {
  return _title;
}

- (void)setTitle:(NSString*)title {
  if (title != nil && [title isEqualToString:_title]) return;
  _title = Retain(title);
  [self updateStatusItemIcon];
}

// ---- Preferences and accounts

- (BOOL)statusBarItemEnabled {
  NSUserDefaults* defaults = [NSUserDefaults standardUserDefaults];
  NSString* const key = @"DisplayStatusItem";
  if ([defaults objectForKey:key] != nil && ![defaults boolForKey:key]) return NO;
  return _numberOfAccounts > 0;
}

- (BOOL)doNotDisturbEnabled {
  return [[NSUserDefaults standardUserDefaults] boolForKey:@"DoNotDisturb"];
}

- (void)preferenceDidChange:(NSNotification*)notification {
  const BOOL isEnabled = [self statusBarItemEnabled];
  const BOOL doNotDisturb = [self doNotDisturbEnabled];
  if (isEnabled == _previousStatusBarItemEnabled && doNotDisturb == _previousDoNotDisturbEnabled) return;
  _previousStatusBarItemEnabled = isEnabled;
  _previousDoNotDisturbEnabled = doNotDisturb;
  [self updateStatusItemIcon];
}

- (void)numberOfAccountsChanged:(NSNotification*)notification {
  _numberOfAccounts = [[[notification userInfo] objectForKey:@"num-accounts"] integerValue];
  [self updateStatusItemIcon];
}

// ---- The item

- (void)updateStatusItemIcon {
  platform::DockMenuMayHaveChanged();
  if (![self statusBarItemEnabled]) return [self removeStatusItem];
  if (!_statusItem && ![self createStatusItem]) return;
  if ([self doNotDisturbEnabled]) {
    [_statusItem setImage:Tinted([NSImage imageNamed:kDefaultIcon], [NSColor lightGrayColor])];
    [_statusItem setLength:kIconLength];
    [_statusItem setTitle:@""];
    return;
  }
  [_statusItem setImage:[self icon]];
  [_statusItem setLength:TitleWidth(_title) + (_hasErrors ? kErrorTitleMargin : kTitleMargin)];
  [_statusItem setTitle:_title];
}

- (NSImage*)icon {
  if (_hasErrors) return [NSImage imageNamed:kErrorIcon];
  NSImage* icon = [NSImage imageNamed:kDefaultIcon];
  return [_title length] > 0 ? Tinted(icon, [NSColor ts_colorWithHexColorString:kUnreadColor]) : icon;
}

- (BOOL)createStatusItem {
  if (!platform::IsWindowServerAvailable()) {
    TsLogWarning(@"The status item needs a window server");
    return NO;
  }
  auto menu = Adopt([[NSMenu alloc] init]);
  [menu setDelegate:static_cast<id>(self)];
  _statusItem = Retain([[NSStatusBar systemStatusBar] statusItemWithLength:kIconLength]);
  [_statusItem setHighlightMode:YES];
  [_statusItem setMenu:menu];
  return _statusItem.get() != nil;
}

- (void)removeStatusItem {
  if (!_statusItem) return;
  [[NSStatusBar systemStatusBar] removeStatusItem:_statusItem];
  _statusItem = nullptr;
}

// ---- The menu

- (void)menuNeedsUpdate:(NSMenu*)menu {
  [self menuNeedsUpdate:menu type:@"status-item" includeMessage:YES];
}

- (void)menuNeedsUpdate:(NSMenu*)menu type:(NSString*)type includeMessage:(BOOL)includesMessages {
  [menu removeAllItems];
  if (!_menuNeedsUpdateCallback) return;
  NSDictionary* contents = _menuNeedsUpdateCallback(type, includesMessages);
  const auto form = includesMessages ? StatusMenuForm::Full : StatusMenuForm::Compact;
  BuildStatusMenu(menu, self, contents, form, [self doNotDisturbEnabled]);
}

- (BOOL)validateMenuItem:(NSMenuItem*)item {
  if (!sel_isEqual([item action], @selector(checkForNewMessages:))) return YES;
  return ![self doNotDisturbEnabled];
}

- (void)checkForNewMessages:(id)sender {
  TsPost(@"TsGetNewMessagesNotification", self);
}

- (void)toggleDoNotDisturb:(id)sender {
  TsPost(@"TsToggleDoNotDisturbNotification", self);
}

- (void)composeNewMessage:(id)sender {
  TsPost(@"TsComposeNewMessageNotification", self);
}

- (void)showTabViewItem:(id)sender {
  TsPost(@"TsActivateTabForAccountNotification", self, InfoOf(sender, @"account-db-id"));
}

- (void)loginOAuth:(id)sender {
  TsPost(@"TsOpenOAuthWindowForAccountNotification", self, InfoOf(sender, @"account-db-id"));
}

- (void)openMessage:(id)sender {
  TsPost(@"TsOpenMessageWithUniqueNotificationId", self, InfoOf(sender, @"unique-id"));
}

@end

void TsActivateStatusItem() { [TsStatusItemController sharedInstance]; }

void TsListenForStatusItemMenuNeedsUpdate() {
  static const bool isListening [[maybe_unused]] = [] {
    [[TsStatusItemController sharedInstance] setMenuNeedsUpdateCallback:AskScriptForMenu];
    return true;
  }();
}
