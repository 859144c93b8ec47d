#import "Toolbar/TsAddTabView.h"

#include <algorithm>

#include "Base/Ref.h"
#import "Extensions/TsColors.h"
#include "Platform/SystemAppearance.h"

namespace {

constexpr NSRect kFrame = {{0, 0}, {25, 24}};
constexpr CGFloat kPlusLength = 11;
constexpr CGFloat kDownwards = 270;

// Hexadecimal colours.
struct Look {
  NSString* gradientStart;
  NSString* gradientEnd;
  NSString* edge;
  NSString* plus;
};

Look LookOf(bool isMain, bool isHovering, bool isDark) {
  if (!isMain) {
    return isDark ? Look{@"1b1c1d", @"1b1c1d", @"494a4c", @"303132"} : Look{@"e5e4e5", @"e5e4e5", @"cecece", @"cecece"};
  }
  if (isHovering) {
    return isDark ? Look{@"292929", @"262626", @"515253", @"a3a3a3"} : Look{@"b4b2b4", @"acaaac", @"979797", @"696869"};
  }
  return isDark ? Look{@"212121", @"1f1f1f", @"515253", @"828282"} : Look{@"c2c0c2", @"bab8ba", @"8b898b", @"696869"};
}

NSColor* Color(NSString* hex) { return [NSColor ts_colorWithHexColorString:hex]; }

void Stroke(NSString* color, std::initializer_list<NSPoint> points) {
  NSBezierPath* path = [NSBezierPath bezierPath];
  [path setLineWidth:1];
  [path moveToPoint:*points.begin()];
  for (const NSPoint* point = points.begin() + 1; point != points.end(); ++point) [path lineToPoint:*point];
  [Color(color) set];
  [path stroke];
}

void FillWithGradient(NSRect area, const Look& look) {
  const auto gradient = Adopt([[NSGradient alloc] initWithStartingColor:Color(look.gradientStart)
                                                            endingColor:Color(look.gradientEnd)]);
  [gradient drawInRect:area angle:kDownwards];
}

void StrokeEdge(NSRect area, const Look& look) {
  Stroke(look.edge, {NSMakePoint(NSMaxX(area), NSMaxY(area)), NSMakePoint(NSMinX(area), NSMaxY(area)),
                     NSMakePoint(NSMinX(area), NSMinY(area))});
}

void StrokePlus(NSRect area, const Look& look) {
  const CGFloat besides = (NSWidth(area) - kPlusLength) / 2;
  const CGFloat above = (NSHeight(area) - kPlusLength) / 2;
  Stroke(look.plus, {NSMakePoint(NSMidX(area), NSMinY(area) + above), NSMakePoint(NSMidX(area), NSMaxY(area) - above)});
  Stroke(look.plus,
         {NSMakePoint(NSMinX(area) + besides, NSMidY(area)), NSMakePoint(NSMaxX(area) - besides, NSMidY(area))});
}

}  // namespace

@implementation TsAddTabView

@synthesize isHovering = _isHovering;
@synthesize isDarkMode = _isDarkMode;
@synthesize delegate = _delegate;

- (instancetype)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  if (self) _isDarkMode = tessaro::platform::IsDarkMode();
  return self;
}

- (void)setIsDarkMode:(BOOL)isDarkMode {
  _isDarkMode = isDarkMode;
  [self setNeedsDisplay:YES];
}

- (NSRect)buttonArea {
  NSRect area = [self bounds];
  area.size.height = std::min(NSWidth(area) - 1, NSHeight(area));
  return area;
}

- (BOOL)acceptsFirstMouse:(NSEvent*)event {
  return NO;
}

- (void)mouseDown:(NSEvent*)event {
  [_delegate addTabViewButtonClicked];
}

- (void)viewDidMoveToWindow {
  [super viewDidMoveToWindow];
  if (_isTracking) [self removeTrackingRect:_buttonTracking];
  _isTracking = [self window] != nil;
  if (!_isTracking) return;
  _buttonTracking = [self addTrackingRect:[self buttonArea] owner:self userData:nullptr assumeInside:NO];
}

- (void)mouseEntered:(NSEvent*)event {
  _isHovering = YES;
  [self setNeedsDisplay:YES];
}

- (void)mouseExited:(NSEvent*)event {
  _isHovering = NO;
  [self setNeedsDisplay:YES];
}

- (void)drawRect:(NSRect)dirty {
  const NSRect area = [self buttonArea];
  const Look look = LookOf([[self window] isMainWindow], _isHovering, _isDarkMode);
  NSRectClip(area);
  FillWithGradient(area, look);
  StrokeEdge(area, look);
  StrokePlus(area, look);
}

@end

@implementation TsAddTabViewController

@synthesize actionDelegate = _actionDelegate;

- (instancetype)initWithActionDelegate:(id<TsAddTabViewDelegate>)delegate {
  self = [super init];
  if (self == nil) return nil;
  _actionDelegate = delegate;
  const auto button = Adopt([[TsAddTabView alloc] initWithFrame:kFrame]);
  [button setDelegate:delegate];
  [self setView:button];
  return self;
}

- (void)dealloc {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  [super dealloc];
}

- (void)setActionDelegate:(id<TsAddTabViewDelegate>)delegate {
  _actionDelegate = delegate;
  [static_cast<TsAddTabView*>([self view]) setDelegate:delegate];
}

- (void)viewDidAppear {
  [super viewDidAppear];
  for (NSString* name in @[ NSWindowDidBecomeMainNotification, NSWindowDidResignMainNotification ]) {
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(windowMainChanged:)
                                                 name:name
                                               object:[[self view] window]];
  }
}

- (void)viewDidDisappear {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  [super viewDidDisappear];
}

- (void)windowMainChanged:(NSNotification*)notification {
  [[self view] setNeedsDisplay:YES];
}

@end
