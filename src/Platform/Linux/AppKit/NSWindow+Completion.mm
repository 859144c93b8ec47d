#import "Platform/Linux/AppKit/CocoaAdditions.h"

#import <GNUstepGUI/GSToolbarView.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <utility>

#include "Base/Ref.h"
#include "Platform/Linux/AppKit/Completion.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"
#include "Platform/Linux/AppKit/SideTable.h"
#include "Platform/Linux/Base/XDisplay.h"

NSString* const NSWindowDidChangeBackingPropertiesNotification = @"NSWindowDidChangeBackingPropertiesNotification";

// Keeps the accessories of one window in their place.
@interface TsTitlebarAccessories : NSObject {
  NSWindow* _window;
  Ref<NSMutableArray> _controllers;
}
- (instancetype)initWithWindow:(NSWindow*)window;
- (NSArray*)controllers;
- (void)add:(NSTitlebarAccessoryViewController*)controller;
@end

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

- (void)setLayoutAttribute:(NSLayoutAttribute)attribute {
}

@end

namespace {

using Accessories = tessaro::platform::SideTable<NSWindow, Ref<TsTitlebarAccessories>>;

}  // namespace

@implementation NSWindow (Completion)

- (NSArray*)sheets {
  NSWindow* sheet = [self attachedSheet];
  return sheet != nil ? @[ sheet ] : @[];
}

+ (void)setAllowsAutomaticWindowTabbing:(BOOL)allows {
}

- (NSArray*)titlebarAccessoryViewControllers {
  const auto accessories = Accessories::Shared().Get(self, nullptr);
  return accessories ? [accessories controllers] : [NSArray array];
}

- (void)addTitlebarAccessoryViewController:(NSTitlebarAccessoryViewController*)controller {
  auto accessories = Accessories::Shared().Get(self, nullptr);
  if (!accessories) {
    accessories = Adopt([[TsTitlebarAccessories alloc] initWithWindow:self]);
    Accessories::Shared().Set(self, accessories);
  }
  [accessories add:controller];
}

@end

namespace tessaro::platform {

namespace {

constexpr CGFloat kSmallest = 1;

using Borders = void (*)(id, SEL, float*, float*, float*, float*, unsigned, unsigned long);
ReplacedMethod<Borders> bordersOf;
ReplacedMethod<void (*)(id, SEL, int, NSGraphicsContext*)> makeCanvas;
bool isMakingCanvas = false;
ReplacedMethod<NSRect (*)(id, SEL, NSRect, NSUInteger)> contentRectForFrameRect;
ReplacedMethod<void (*)(NSWindow*, SEL, NSRect, BOOL, BOOL)> setFrame;
ReplacedMethod<void (*)(NSPanel*, SEL, NSEvent*)> keyDown;

NSSize LargestSize() {
  NSRect all = NSZeroRect;
  for (NSScreen* screen in [NSScreen screens]) all = NSUnionRect(all, [screen frame]);
  return all.size;
}

// X servers refuse windows without a size, and GNUstep's pictures of windows much larger than the screens take all
// memory. The upper left corner stays.
void SetFrameWithinScreens(NSWindow* window, SEL selector, NSRect frame, BOOL display, BOOL animate) {
  const NSSize borders = [window frameRectForContentRect:NSZeroRect].size;
  const NSSize largest = LargestSize();
  const CGFloat top = NSMaxY(frame);
  frame.size.width = std::clamp(NSWidth(frame), borders.width + kSmallest, borders.width + largest.width);
  frame.size.height = std::clamp(NSHeight(frame), borders.height + kSmallest, borders.height + largest.height);
  frame.origin.y = top - NSHeight(frame);
  setFrame(window, selector, frame, display, animate);
}

// The window's pixels, which drawing begins with, stay when it is opened again.
void MakeCanvas(id server, SEL selector, int window, NSGraphicsContext* context) {
  isMakingCanvas = true;
  makeCanvas(server, selector, window, context);
  isMakingCanvas = false;
}

// Whether the X window is on the display, or under others there.
bool IsMapped(unsigned long window) {
  XWindowAttributes attributes;
  return XGetWindowAttributes(XDisplay(), window, &attributes) != 0 && attributes.map_state != IsUnmapped;
}

// Window managers take the borders off a closed window and say that it has none, but the next opening gives them back.
// Without borders the window would be as large as its frame. The X window's origin is the frame's until then.
void BordersOf(id server, SEL selector, float* left, float* right, float* top, float* bottom, unsigned style,
               unsigned long window) {
  bordersOf(server, selector, left, right, top, bottom, style, window);
  const bool hasBorders = *left + *right + *top + *bottom > 0;
  if (hasBorders || window == 0 || (style & NSTitledWindowMask) == 0 || IsMapped(window)) return;
  bordersOf(server, selector, left, right, top, bottom, style, 0);
  if (isMakingCanvas) return;
  *right += std::exchange(*left, 0);
  *bottom += std::exchange(*top, 0);
}

// In a window's own coordinates, which begin at zero, GNUstep takes the borders' pixels for points.
NSRect ContentRectForFrameRect(id decorations, SEL selector, NSRect frame, NSUInteger style) {
  NSRect content = contentRectForFrameRect(decorations, selector, frame, style);
  if (!NSEqualPoints(frame.origin, NSZeroPoint)) return content;
  const CGFloat scale = [[NSScreen mainScreen] userSpaceScaleFactor];
  content.origin = NSMakePoint(NSMinX(content) / scale, NSMinY(content) / scale);
  return content;
}

// GNUstep closes the panel without asking its delegate.
void CloseWithEscape(NSPanel* panel, SEL selector, NSEvent* event) {
  const bool isEscape = [[event charactersIgnoringModifiers] isEqual:@"\e"];
  isEscape && ([panel styleMask] & NSClosableWindowMask) ? [panel performClose:nil] : keyDown(panel, selector, event);
}

}  // namespace

void CompleteWindows() {
  Class server = NSClassFromString(@"XGServer");
  bordersOf.With(server, "styleoffsets::::::", BordersOf);
  makeCanvas.With(server, "setWindowdevice:forContext:", MakeCanvas);
  contentRectForFrameRect.With(object_getClass(NSClassFromString(@"GSWindowDecorationView")),
                               "contentRectForFrameRect:styleMask:", ContentRectForFrameRect);
  setFrame.With([NSWindow class], "setFrame:display:animate:", SetFrameWithinScreens);
  keyDown.With([NSPanel class], "keyDown:", CloseWithEscape);
}

}  // namespace tessaro::platform
