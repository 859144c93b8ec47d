#pragma once

#import "Platform/Cocoa.h"

@protocol TsAddTabViewDelegate
- (void)addTabViewButtonClicked;
@end

// A button with a plus sign in the window's title bar.
@interface TsAddTabView : NSView {
  BOOL _isHovering;
  BOOL _isDarkMode;
  id<TsAddTabViewDelegate> _delegate;
  NSTrackingRectTag _buttonTracking;
  BOOL _isTracking;
}

@property(nonatomic, assign) BOOL isHovering;
@property(nonatomic, assign) BOOL isDarkMode;
// Not retained: the delegate clears this at its end.
@property(nonatomic, assign) id<TsAddTabViewDelegate> delegate;

@end

// Holds the view in a title bar, and redraws it when its window becomes or resigns main.
@interface TsAddTabViewController : NSTitlebarAccessoryViewController {
  id<TsAddTabViewDelegate> _actionDelegate;
}

@property(nonatomic, assign) id<TsAddTabViewDelegate> actionDelegate;

- (instancetype)initWithActionDelegate:(id<TsAddTabViewDelegate>)delegate;

@end
