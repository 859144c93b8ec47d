#pragma once

#include <AppKit/NSDragging.h>
#include <AppKit/NSResponder.h>

using NSAutoresizingMaskOptions = NSUInteger;
enum : NSAutoresizingMaskOptions {
  NSViewNotSizable = 0,
  NSViewMinXMargin = 1,
  NSViewWidthSizable = 2,
  NSViewMaxXMargin = 4,
  NSViewMinYMargin = 8,
  NSViewHeightSizable = 16,
  NSViewMaxYMargin = 32,
};
enum NSBorderType : NSUInteger { NSNoBorder = 0, NSLineBorder = 1, NSBezelBorder = 2 };
using NSTrackingRectTag = NSInteger;
using NSToolTipTag = NSInteger;

@interface NSView : NSResponder
- (instancetype)initWithFrame:(NSRect)frame;
@property(readonly, assign) NSWindow* window;
@property(readonly, assign) NSView* superview;
@property(copy) NSArray* subviews;
@property(getter=isHidden) BOOL hidden;
@property NSRect frame;
@property NSRect bounds;
@property(readonly, getter=isFlipped) BOOL flipped;
@property(readonly, getter=isOpaque) BOOL opaque;
@property CGFloat alphaValue;
@property NSAutoresizingMaskOptions autoresizingMask;
@property BOOL needsDisplay;
- (NSInteger)tag;
@property BOOL wantsLayer;
@property(copy) NSString* toolTip;
@property(assign) NSView* nextKeyView;
@property(readonly) NSRect visibleRect;
- (void)setFrameOrigin:(NSPoint)origin;
- (void)setFrameSize:(NSSize)size;
- (void)setNeedsDisplayInRect:(NSRect)rect;
- (void)addSubview:(NSView*)view;
- (void)removeFromSuperview;
- (id)viewWithTag:(NSInteger)tag;
- (BOOL)isDescendantOf:(NSView*)view;
- (void)viewDidMoveToWindow;
- (void)viewWillMoveToWindow:(NSWindow*)window;
- (void)viewDidMoveToSuperview;
- (void)drawRect:(NSRect)rect;
- (void)display;
- (void)lockFocus API_DEPRECATED("", macos(10.0, 10.14));
- (void)unlockFocus API_DEPRECATED("", macos(10.0, 10.14));
- (NSPoint)convertPoint:(NSPoint)point fromView:(NSView*)view;
- (NSPoint)convertPoint:(NSPoint)point toView:(NSView*)view;
- (NSRect)convertRect:(NSRect)rect toView:(NSView*)view;
- (NSRect)convertRect:(NSRect)rect fromView:(NSView*)view;
- (BOOL)acceptsFirstMouse:(NSEvent*)event;
- (NSTrackingRectTag)addTrackingRect:(NSRect)rect owner:(id)owner userData:(void*)data assumeInside:(BOOL)inside;
- (void)removeTrackingRect:(NSTrackingRectTag)tag;
- (void)registerForDraggedTypes:(NSArray*)types;
- (NSMenu*)menuForEvent:(NSEvent*)event;
- (void)resetCursorRects;
- (void)mouseDown:(NSEvent*)event;
- (NSBitmapImageRep*)bitmapImageRepForCachingDisplayInRect:(NSRect)rect;
- (void)cacheDisplayInRect:(NSRect)rect toBitmapImageRep:(NSBitmapImageRep*)rep;
- (void)displayRectIgnoringOpacity:(NSRect)rect inContext:(NSGraphicsContext*)context;
@end
