#pragma once

#import "Platform/Cocoa.h"

@class TsToolbarController;

// An item that asks its controller whether it is enabled.
@interface TsToolbarItem : NSToolbarItem {
  TsToolbarController* _controller;
}

// Not retained: the controller owns the item, and leaves it at its end.
@property(nonatomic, assign) TsToolbarController* controller;

@end

// A toolbar that hides the add-tab button while the customisation palette is open.
@interface TsToolbar : NSToolbar {
  TsToolbarController* _toolbarController;
  BOOL _needToShowAddTabButton;
}

// Whether the button is to be there when the palette has closed.
@property(nonatomic, assign) BOOL needToShowAddTabButton;
// Not retained, as above.
@property(nonatomic, assign) TsToolbarController* toolbarController;

@end
