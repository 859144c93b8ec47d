#pragma once

#include "Base/Ref.h"
#import "Platform/Cocoa.h"
#import "Toolbar/TsAddTabView.h"

@class TsToolbarController;

// An item that asks its controller whether it is enabled.
@interface TsToolbarItem : NSToolbarItem {
  TsToolbarController* _controller;
}

// Not retained: the controller owns the item, and clears this at its end.
@property(nonatomic, assign) TsToolbarController* controller;

@end

// A toolbar that hides the add-tab button while the customisation palette is open.
@interface TsToolbar : NSToolbar {
  TsToolbarController* _toolbarController;
  BOOL _needToShowAddTabButton;
}

// Whether to show the button when the palette has closed.
@property(nonatomic, assign) BOOL needToShowAddTabButton;
// Not retained, as above.
@property(nonatomic, assign) TsToolbarController* toolbarController;

@end

// The toolbar of one window, defined by script: makes the items, validates them through script, and reports clicks. It
// lives until its window closes. Main thread only.
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

// The controller of an open window by script's id for it; the oldest one of several with the same id.
+ (TsToolbarController*)toolbarControllerForWindowId:(int)windowId;

// Ends the process when the definition has no identifier, items or options.
- (instancetype)initWithDictionary:(NSDictionary*)definition;

// To be called once.
- (void)addToWindow:(NSWindow*)window withId:(int)windowId;

- (int)windowId;
// nil when the window is gone.
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
