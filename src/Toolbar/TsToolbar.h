#pragma once

#import "Platform/Cocoa.h"

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
