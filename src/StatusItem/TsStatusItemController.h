#pragma once

#include <functional>

#include "Base/Ref.h"
#import "Platform/Cocoa.h"

// Describes the menu: `type` is "status-item" or "dock". The dictionary has "accounts" and "translations".
using TsStatusMenuSource = std::function<NSDictionary*(NSString* type, bool includesMessages)>;

// The icon in the menu bar with its account menu. Shown while "DisplayStatusItem" in the user defaults is not false and
// there is an account. Choosing a row posts a notification, whose object is the controller:
//
//   TsGetNewMessagesNotification
//   TsToggleDoNotDisturbNotification           whoever observes it changes "DoNotDisturb" in the user defaults
//   TsComposeNewMessageNotification
//   TsActivateTabForAccountNotification        "account-db-id"
//   TsOpenOAuthWindowForAccountNotification    "account-db-id"
//   TsOpenMessageWithUniqueNotificationId      "unique-id"
//
// Main thread only.
@interface TsStatusItemController : NSObject {
  BOOL _hasErrors;
  BOOL _previousDoNotDisturbEnabled;
  BOOL _previousStatusBarItemEnabled;
  Ref<NSStatusItem> _statusItem;
  Ref<NSString> _title;
  TsStatusMenuSource _menuNeedsUpdateCallback;
  NSInteger _numberOfAccounts;
}

// Some account is in error: another icon.
@property(nonatomic) BOOL hasErrors;
// What preferenceDidChange: acted on last.
@property(nonatomic) BOOL previousDoNotDisturbEnabled;
@property(nonatomic) BOOL previousStatusBarItemEnabled;
// nil while the item is not shown.
@property(nonatomic, retain) NSStatusItem* statusItem;
// The text beside the icon.
@property(nonatomic, retain) NSString* title;
@property(nonatomic) TsStatusMenuSource menuNeedsUpdateCallback;
// -1 until somebody has reported a number.
@property(nonatomic) NSInteger numberOfAccounts;

+ (TsStatusItemController*)sharedInstance;

// Fills `menu` with what the callback says of `type`. Without messages it takes its compact form.
- (void)menuNeedsUpdate:(NSMenu*)menu type:(NSString*)type includeMessage:(BOOL)includesMessages;

- (BOOL)statusBarItemEnabled;
- (BOOL)doNotDisturbEnabled;

- (BOOL)validateMenuItem:(NSMenuItem*)item;
- (void)checkForNewMessages:(id)sender;
- (void)toggleDoNotDisturb:(id)sender;
- (void)composeNewMessage:(id)sender;
- (void)showTabViewItem:(id)sender;
- (void)loginOAuth:(id)sender;
- (void)openMessage:(id)sender;

@end

// Creates the shared controller. The item shows itself later.
void TsActivateStatusItem();

// Lets script describe the status item's menu each time it is about to open.
void TsListenForStatusItemMenuNeedsUpdate();
