#import <AppKit/AppKit.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "Platform/Linux/AppKit/ReplacedMethod.h"
#import "Platform/Linux/Theme/TsDesktopTheme.h"

using namespace tessaro::platform;

namespace {

constexpr CGFloat kCorner = 5;
constexpr CGFloat kPressed = 0.12;
constexpr CGFloat kFocusWidth = 2;
constexpr CGFloat kBezelInset = 2;
constexpr CGFloat kKnobInset = 3;
constexpr CGFloat kTrackHeight = 6;
constexpr CGFloat kMarkCorner = 3;
constexpr CGFloat kTickWidth = 1.8;

NSBezierPath* RoundedRect(NSRect rect, CGFloat radius) {
  return [NSBezierPath bezierPathWithRoundedRect:rect xRadius:radius yRadius:radius];
}

void DrawTick(NSRect box) {
  const bool isFlipped = [[NSView focusView] isFlipped];
  const auto point = [&](CGFloat x, CGFloat y) {
    return NSMakePoint(NSMinX(box) + x * NSWidth(box), NSMinY(box) + (isFlipped ? 1 - y : y) * NSHeight(box));
  };
  NSBezierPath* tick = [NSBezierPath bezierPath];
  [tick moveToPoint:point(0.22, 0.5)];
  [tick lineToPoint:point(0.42, 0.28)];
  [tick lineToPoint:point(0.78, 0.74)];
  [tick setLineWidth:kTickWidth];
  [tick stroke];
}

void FillRounded(NSRect rect, CGFloat radius, NSColor* colour) {
  [colour set];
  [RoundedRect(rect, radius) fill];
}

void StrokeRounded(NSRect rect, CGFloat radius, CGFloat width, NSColor* colour) {
  [colour set];
  NSBezierPath* path = RoundedRect(NSInsetRect(rect, width / 2, width / 2), radius);
  [path setLineWidth:width];
  [path stroke];
}

void DrawFocus(NSRect frame) {
  StrokeRounded(NSInsetRect(frame, 1, 1), kCorner, kFocusWidth, [NSColor keyboardFocusIndicatorColor]);
}

bool IsDefaultButton(NSCell* cell) {
  NSButtonCell* button = As<NSButtonCell>(cell);
  return [button isBordered] && [[button keyEquivalent] isEqual:@"\r"] && [button isEnabled];
}

bool IsOn(NSCell* cell) {
  NSButtonCell* button = As<NSButtonCell>(cell);
  return [button state] == NSOnState && ([button showsStateBy] & (NSChangeBackgroundCellMask | NSChangeGrayCellMask));
}

void DrawMark(NSRect box, bool isOn) {
  FillRounded(box, kMarkCorner, isOn ? [NSColor selectedControlColor] : [NSColor textBackgroundColor]);
  if (!isOn) return StrokeRounded(box, kMarkCorner, 1, [NSColor knobColor]);
  [[NSColor alternateSelectedControlTextColor] set];
  DrawTick(box);
}

void DrawField(NSRect frame, NSView* view) {
  // The round corners show the colour behind the view.
  [[[view window] backgroundColor] set];
  if ([view isOpaque]) NSRectFill(frame);
  FillRounded(NSInsetRect(frame, 0.5, 0.5), kCorner, [NSColor textBackgroundColor]);
  const bool isEdited = [As<NSControl>(view) currentEditor] != nil;
  StrokeRounded(frame, kCorner, isEdited ? kFocusWidth : 1,
                isEdited ? [NSColor keyboardFocusIndicatorColor] : [NSColor gridColor]);
}

// ---- What draws or measures without asking the theme

ReplacedMethod<NSColor* (*)(NSButtonCell*, SEL)> textColor;
ReplacedMethod<void (*)(NSButtonCell*, SEL, NSImage*, NSRect, NSView*)> drawImage;
ReplacedMethod<void (*)(NSSplitView*, SEL, NSRect)> drawDivider;
ReplacedMethod<NSScroller* (*)(NSScroller*, SEL, NSRect)> initScroller;
ReplacedMethod<NSRect (*)(NSTextFieldCell*, SEL, NSRect)> titleRect;

bool IsThemed() { return As<TsDesktopTheme>([GSTheme theme]) != nil; }

NSColor* TextColor(NSButtonCell* cell, SEL selector) {
  const bool isOnAccent = IsThemed() && [cell isEnabled] && [cell isBordered] && (IsDefaultButton(cell) || IsOn(cell));
  return isOnAccent ? [NSColor alternateSelectedControlTextColor] : textColor(cell, selector);
}

// A check box is a button with a picture. An alert's default button and a scroller's knob have one too many.
void DrawImage(NSButtonCell* cell, SEL selector, NSImage* image, NSRect frame, NSView* view) {
  NSString* name = IsThemed() ? [image name] : nil;
  if ([name isEqual:@"common_ret"] || [name hasPrefix:@"common_Dimple"]) return;
  if (![name hasPrefix:@"GSSwitch"]) return drawImage(cell, selector, image, frame, view);
  const NSSize size = NSMakeSize([image size].width - 2, [image size].height - 2);
  DrawMark(NSMakeRect(NSMidX(frame) - size.width / 2, NSMidY(frame) - size.height / 2, size.width, size.height),
           [cell state] == NSOnState);
}

void DrawDivider(NSSplitView* view, SEL selector, NSRect rect) {
  if (!IsThemed()) drawDivider(view, selector, rect);
}

NSScroller* InitScroller(NSScroller* scroller, SEL selector, NSRect frame) {
  scroller = initScroller(scroller, selector, frame);
  if (IsThemed()) [scroller setArrowsPosition:NSScrollerArrowsNone];
  return scroller;
}

// In the middle of the field's height.
NSRect TitleRect(NSTextFieldCell* cell, SEL selector, NSRect bounds) {
  NSRect rect = titleRect(cell, selector, bounds);
  const CGFloat spare = NSHeight(rect) - [[cell font] defaultLineHeightForFont];
  return IsThemed() && [cell isBezeled] && spare > 0 ? NSInsetRect(rect, 0, std::floor(spare / 2)) : rect;
}

}  // namespace

@implementation TsDesktopTheme (Drawing)

+ (void)replaceMethods {
  textColor.With([NSButtonCell class], "textColor", TextColor);
  drawImage.With([NSButtonCell class], "drawImage:withFrame:inView:", DrawImage);
  drawDivider.With([NSSplitView class], "drawDividerInRect:", DrawDivider);
  initScroller.With([NSScroller class], "initWithFrame:", InitScroller);
  titleRect.With([NSTextFieldCell class], "titleRectForBounds:", TitleRect);
}

// ---- Buttons

// GNUstep marks the default button by a picture; here the button's colour does.
- (void)setKeyEquivalent:(NSString*)key forButtonCell:(NSButtonCell*)cell {
}

- (void)drawButton:(NSRect)frame in:(NSCell*)cell view:(NSView*)view style:(int)style state:(GSThemeControlState)state {
  NSString* name = [self nameForElement:cell];
  if ([name isEqual:GSScrollerVerticalKnob] || [name isEqual:GSScrollerHorizontalKnob]) {
    const NSRect knob = NSInsetRect(frame, kKnobInset - 1, kKnobInset - 1);
    return FillRounded(knob, std::min(NSWidth(knob), NSHeight(knob)) / 2, [NSColor knobColor]);
  }
  if ([name hasPrefix:@"GSScroller"]) return;
  NSColor* colour = IsDefaultButton(cell) || IsOn(cell) ? [NSColor selectedControlColor] : [NSColor controlColor];
  const NSRect face = NSInsetRect(frame, style == NSRoundedBezelStyle ? kBezelInset : 0, 1);
  const bool isPressed = state == GSThemeSelectedState || state == GSThemeSelectedFirstResponderState;
  if (isPressed) colour = [colour blendedColorWithFraction:kPressed ofColor:[NSColor textColor]];
  FillRounded(face, kCorner, colour);
  if (state == GSThemeFirstResponderState) DrawFocus(NSInsetRect(face, -1, -1));
}

// A button with a face has the frame around that.
- (void)drawFocusFrame:(NSRect)frame view:(NSView*)view {
  if (![As<NSButton>(view) isBordered]) DrawFocus(frame);
}

// ---- Borders

- (void)drawBorderType:(NSBorderType)type frame:(NSRect)frame view:(NSView*)view {
  if (type == NSBezelBorder) return DrawField(frame, view);
  if (type == NSNoBorder) return;
  [[NSColor gridColor] set];
  NSFrameRect(frame);
}

- (void)drawScrollViewRect:(NSRect)rect inView:(NSView*)view {
  if ([static_cast<NSScrollView*>(view) borderType] != NSNoBorder) DrawField([view bounds], view);
}

- (NSRect)drawButton:(NSRect)border withClip:(NSRect)clip {
  [[NSColor controlColor] set];
  NSRectFill(border);
  [[NSColor gridColor] set];
  NSFrameRect(border);
  return NSInsetRect(border, 1, 1);
}

- (NSRect)drawGroove:(NSRect)border withClip:(NSRect)clip {
  return [self drawButton:border withClip:clip];
}

// ---- Tables

- (void)drawTableHeaderCell:(NSTableHeaderCell*)cell
                  withFrame:(NSRect)frame
                     inView:(NSView*)view
                      state:(GSThemeControlState)state {
  [[NSColor headerColor] set];
  NSRectFill(frame);
  [[NSColor gridColor] set];
  NSRectFill(NSMakeRect(NSMinX(frame), [view isFlipped] ? NSMaxY(frame) - 1 : NSMinY(frame), NSWidth(frame), 1));
}

- (void)drawTableCornerView:(NSView*)view withClip:(NSRect)clip {
  [[NSColor headerColor] set];
  NSRectFill(clip);
}

- (void)drawTableViewGridInClipRect:(NSRect)rect inView:(NSView*)view {
}

// ---- Menus

- (BOOL)drawsBorderForMenuItemCell:(NSMenuItemCell*)cell
                             state:(GSThemeControlState)state
                      isHorizontal:(BOOL)isHorizontal {
  return NO;
}

- (NSColor*)menuBorderColorForEdge:(NSRectEdge)edge isHorizontal:(BOOL)isHorizontal {
  return isHorizontal && edge != NSMinYEdge ? nil : [NSColor gridColor];
}

// ---- Progress

- (void)drawProgressIndicator:(NSProgressIndicator*)progress
                   withBounds:(NSRect)bounds
                     withClip:(NSRect)clip
                      atCount:(int)count
                     forValue:(double)value {
  NSRect track = NSMakeRect(NSMinX(bounds), NSMidY(bounds) - kTrackHeight / 2, NSWidth(bounds), kTrackHeight);
  FillRounded(track, kTrackHeight / 2, [NSColor controlColor]);
  if ([progress isIndeterminate]) {
    constexpr int kSteps = 40;
    const CGFloat width = NSWidth(track) / 4;
    const CGFloat way = std::abs(count % kSteps - kSteps / 2);
    track.origin.x += (NSWidth(track) - width) * way * 2 / kSteps;
    track.size.width = width;
  } else {
    track.size.width *= value;
  }
  if (NSWidth(track) > 0) FillRounded(track, kTrackHeight / 2, [NSColor selectedControlColor]);
}

@end
