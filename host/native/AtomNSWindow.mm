#import "native/AtomNSWindow.h"

#import <AppKit/AppKit.h>

#include "Base/Ref.h"
#import "native/BRYInspectableWebContentsView.h"
#import "native/WebContentsViewCocoa.h"

static const NSUInteger kStyle =
    NSTitledWindowMask | NSClosableWindowMask | NSMiniaturizableWindowMask | NSResizableWindowMask;

// Passes the focus and keys on to the page.
@interface AtomContentView : NSView
@end

@implementation AtomContentView

- (BOOL)acceptsFirstResponder {
  return YES;
}

- (void)keyDown:(NSEvent*)event {
  [[static_cast<AtomNSWindow*>([self window]) webContentsView] keyDown:event];
}

@end

@implementation AtomNSWindow

- (instancetype)initWithTitle:(NSString*)title size:(NSSize)size {
  const NSRect frame = {.origin = NSZeroPoint, .size = size};
  self = [super initWithContentRect:frame styleMask:kStyle backing:NSBackingStoreBuffered defer:NO];
  if (self == nil) return nil;

  [self setTitle:title];
  [self setReleasedWhenClosed:NO];
  // GNUstep shows the main menu in windows that have it set.
  [self setMenu:[NSApp mainMenu]];

  auto content = Adopt([[AtomContentView alloc] initWithFrame:[[self contentView] frame]]);
  [self setContentView:content];
  auto inspectable = Adopt([[BRYInspectableWebContentsView alloc] initWithFrame:[content bounds]]);
  [inspectable setAutoresizingMask:NSViewWidthSizable | NSViewHeightSizable];
  [content addSubview:inspectable];
  [self makeFirstResponder:[inspectable webContentsView]];
  return self;
}

- (WebContentsViewCocoa*)webContentsView {
  for (NSView* view in [[self contentView] subviews]) {
    if ([view isKindOfClass:[BRYInspectableWebContentsView class]]) {
      return [static_cast<BRYInspectableWebContentsView*>(view) webContentsView];
    }
  }
  return nil;
}

@end
