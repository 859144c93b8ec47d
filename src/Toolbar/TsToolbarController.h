#pragma once

#include "Base/Ref.h"
#import "Platform/Cocoa.h"
#import "Toolbar/TsAddTabView.h"

@class TsToolbar;
@class TsToolbarItem;

// The toolbar of one window, as script has defined it: makes its items, has script validate them, and tells script of
// clicks. It lives until its window closes. Main thread only.
@interface TsToolbarController : NSObject <NSToolbarDelegate, TsAddTabViewDelegate> {
  Ref<TsAddTabViewController> _addTabViewController;
  BOOL _isDarkMode;
  NSWindow* _window;
  Ref<NSString> _toolbarIdentifier;
  Ref<NSArray> _toolbarDefinitions;
  Ref<NSMutableDictionary> _toolbarItems;
  Ref<NSDictionary> _options;
  int _windowId;
}

// The controller of an open window by script's number for it. Of several with the same number the oldest one.
+ (TsToolbarController*)toolbarControllerForWindowId:(int)windowId;

// Ends the process where the definition has no identifier, items or options.
- (instancetype)initWithDictionary:(NSDictionary*)definition;

// Once only.
- (void)addToWindow:(NSWindow*)window withId:(int)windowId;

- (int)windowId;
// nil when there is no such window any more.
- (NSWindow*)window;
- (TsToolbar*)toolbar;

- (BOOL)realValidateToolbarItem:(id)item;
- (void)toolbarAction:(id)sender;

// Gives the first visible button with this identifier the named image.
- (void)changeToolbarItemWithIdentifier:(NSString*)identifier image:(NSString*)imageName;

- (void)showAddTabButton;
- (void)hideAddTabButton;
- (BOOL)isAddTabViewShowing;

@end
