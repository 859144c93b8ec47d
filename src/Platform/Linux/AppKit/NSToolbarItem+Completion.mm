#import <AppKit/AppKit.h>

#include "Base/Ref.h"
#include "Platform/Linux/AppKit/Completion.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"

// GNUstep shows toolbar items without their views and without the selection, and their labels black.

@interface NSView (TsToolbarBackView)
- (NSToolbarItem*)toolbarItem;
@end

namespace tessaro::platform {

namespace {

constexpr CGFloat kLabelHeight = 20;
constexpr CGFloat kLabelBottom = 4;

ReplacedMethod<void (*)(NSToolbarItem*, SEL, NSImage*)> setImage;
ReplacedMethod<void (*)(NSView*, SEL)> layout;
ReplacedMethod<void (*)(NSView*, SEL, NSRect)> drawBackView;
ReplacedMethod<void (*)(NSButton*, SEL, NSRect)> drawButton;
ReplacedMethod<NSColor* (*)(NSButtonCell*, SEL)> textColor;

// ---- Views

// An item's view shows the item's image, if it can.
void SetItemImage(NSToolbarItem* item, SEL selector, NSImage* image) {
  setImage(item, selector, image);
  NSButton* button = As<NSButton>([item view]);
  [button setImage:image];
  [button setImagePosition:NSImageOnly];
}

void LayOutWithView(NSView* backView, SEL selector) {
  layout(backView, selector);
  NSToolbarItem* item = [backView toolbarItem];
  NSView* view = [item view];
  const NSToolbarDisplayMode mode = [[item toolbar] displayMode];
  if (view == nil || mode == NSToolbarDisplayModeLabelOnly) return;
  NSRect room = [backView bounds];
  if (mode != NSToolbarDisplayModeIconOnly) {
    room.origin.y += kLabelHeight;
    room.size.height -= kLabelHeight;
  }
  const NSSize size = [item minSize];
  const CGFloat width = MIN(size.width, NSWidth(room));
  const CGFloat height = MIN(size.height, NSHeight(room));
  [view setFrame:NSMakeRect(NSMidX(room) - width / 2, NSMidY(room) - height / 2, width, height)];
  if ([view superview] != backView) [backView addSubview:view];
}

// GNUstep doesn't show which item is selected.
void DrawSelection(NSButton* button, SEL selector, NSRect dirty) {
  if ([button state] == NSOnState) {
    // A named colour has no alpha.
    NSColor* text = [[NSColor controlTextColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace];
    [[text colorWithAlphaComponent:0.2] set];
    [[NSBezierPath bezierPathWithRoundedRect:NSInsetRect([button bounds], 2, 2) xRadius:4 yRadius:4] fill];
  }
  drawButton(button, selector, dirty);
}

// ---- Labels

NSColor* ColourOf(bool isEnabled) {
  return isEnabled ? [NSColor controlTextColor] : [NSColor disabledControlTextColor];
}

NSColor* LabelColor(NSButtonCell* cell, SEL) { return ColourOf([cell isEnabled]); }

void DrawLabel(NSView* view, SEL, NSRect) {
  NSToolbarItem* item = [view toolbarItem];
  if ([[item toolbar] displayMode] == NSToolbarDisplayModeIconOnly) return;
  NSDictionary* attributes = @{
    NSForegroundColorAttributeName : ColourOf([item isEnabled]),
    NSFontAttributeName : [NSFont systemFontOfSize:11],
  };
  const CGFloat width = [[item label] sizeWithAttributes:attributes].width;
  [[item label] drawAtPoint:NSMakePoint(NSMidX([view bounds]) - width / 2, kLabelBottom) withAttributes:attributes];
}

}  // namespace

void CompleteToolbarItems() {
  Class backView = NSClassFromString(@"GSToolbarBackView");
  setImage.With([NSToolbarItem class], "setImage:", SetItemImage);
  layout.With(backView, "layout", LayOutWithView);
  drawBackView.With(backView, "drawRect:", DrawLabel);
  textColor.With(NSClassFromString(@"GSToolbarButtonCell"), "textColor", LabelColor);
  drawButton.With(NSClassFromString(@"GSToolbarButton"), "drawRect:", DrawSelection);
}

}  // namespace tessaro::platform
