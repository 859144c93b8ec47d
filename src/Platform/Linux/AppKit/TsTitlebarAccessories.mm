#import "Platform/Linux/AppKit/TsTitlebarAccessories.h"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSToolbarView.h>

#include "Platform/Linux/AppKit/NSWindow+Completion.h"

@implementation TsTitlebarAccessories

- (instancetype)initWithWindow:(NSWindow*)window {
  self = [super init];
  if (self == nil) return nil;
  _window = window;
  _controllers = Adopt([[NSMutableArray alloc] init]);
  [self observe:NSWindowDidResizeNotification of:window with:@selector(place:)];
  [self observe:NSWindowWillCloseNotification of:window with:@selector(windowWillClose:)];
  // Showing or hiding the toolbar moves the content.
  [self observe:NSViewFrameDidChangeNotification of:[window contentView] with:@selector(place:)];
  return self;
}

- (void)dealloc {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  [super dealloc];
}

- (void)observe:(NSString*)name of:(id)object with:(SEL)handler {
  [[NSNotificationCenter defaultCenter] addObserver:self selector:handler name:name object:object];
}

- (NSArray*)controllers {
  return [NSArray arrayWithArray:_controllers];
}

- (void)add:(NSTitlebarAccessoryViewController*)controller {
  [_controllers addObject:controller];
  [self place:nil];
  [controller viewDidAppear];
}

- (void)windowWillClose:(NSNotification*)notification {
  for (NSTitlebarAccessoryViewController* controller in [self controllers]) {
    [controller viewDidDisappear];
    [[controller view] removeFromSuperview];
  }
  [_controllers removeAllObjects];
}

- (NSView*)toolbarView {
  if (![[_window toolbar] isVisible]) return nil;
  for (NSView* view in [[[_window contentView] superview] subviews]) {
    if ([view isKindOfClass:[GSToolbarView class]]) return view;
  }
  return nil;
}

// Inside the toolbar's view, which would draw over its neighbours.
- (void)place:(NSNotification*)notification {
  NSView* toolbar = [self toolbarView];
  NSView* content = [_window contentView];
  NSView* bar = toolbar != nil ? toolbar : [content superview];
  const NSRect row = toolbar != nil ? [toolbar bounds] : [content frame];
  CGFloat right = NSMaxX(row);
  for (NSTitlebarAccessoryViewController* controller in _controllers.get()) {
    NSView* view = [controller view];
    const NSSize size = [view frame].size;
    right -= size.width;
    const CGFloat bottom = toolbar != nil ? NSMinY(row) : NSMaxY(row) - size.height;
    if ([view superview] != bar) [bar addSubview:view];
    [view setAutoresizingMask:NSViewMinXMargin | (toolbar != nil ? NSViewMaxYMargin : NSViewMinYMargin)];
    [view setFrameOrigin:NSMakePoint(right, bottom)];
    [view setNeedsDisplay:YES];
  }
}

@end

@implementation NSViewController (Appearance)

- (void)viewDidAppear {
}

- (void)viewDidDisappear {
}

@end

@implementation NSTitlebarAccessoryViewController (Layout)

- (NSLayoutAttribute)layoutAttribute {
  return NSLayoutAttributeRight;
}

- (void)setLayoutAttribute:(NSLayoutAttribute)attribute {
}

@end
