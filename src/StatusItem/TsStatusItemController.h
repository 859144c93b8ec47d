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
//   TsToggleDoNotDisturbNotification           the observer changes "DoNotDisturb" in the user defaults
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
// The values that preferenceDidChange: has last acted on.
@property(nonatomic) BOOL previousDoNotDisturbEnabled;
@property(nonatomic) BOOL previousStatusBarItemEnabled;
// nil while the item is not shown.
@property(nonatomic, retain) NSStatusItem* statusItem;
// The text beside the icon.
@property(nonatomic, retain) NSString* title;
@property(nonatomic) TsStatusMenuSource menuNeedsUpdateCallback;
// -1 until a number is reported.
@property(nonatomic) NSInteger numberOfAccounts;

+ (TsStatusItemController*)sharedInstance;

// Fills `menu` with the callback's contents for `type`, in the compact form when messages are not included.
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

// Asks script for the status item's menu each time the menu is about to open.
void TsListenForStatusItemMenuNeedsUpdate();
