#include "Utilities/Controls.h"

#include <algorithm>

Ref<NSTextField> TsNewLabel(NSString* text, CGFloat width) {
  auto label = Adopt([[NSTextField alloc] initWithFrame:NSZeroRect]);
  [label setStringValue:text];
  [label setEditable:NO];
  [label setSelectable:NO];
  [label setBezeled:NO];
  [label setBordered:NO];
  [label setDrawsBackground:NO];
  [label sizeToFit];
  if (width > 0) [label setFrameSize:NSMakeSize(width, [label frame].size.height)];
  return label;
}

Ref<NSButton> TsNewButton(NSString* title, id target, SEL action, NSString* key, CGFloat leastWidth) {
  auto button = Adopt([[NSButton alloc] initWithFrame:NSZeroRect]);
  [button setTitle:title];
  [button setBezelStyle:NSRoundedBezelStyle];
  [button setTarget:target];
  [button setAction:action];
  [button setKeyEquivalent:key];
  [button sizeToFit];
  const NSSize size = [button frame].size;
  [button setFrameSize:NSMakeSize(std::max(size.width, leastWidth), size.height)];
  return button;
}

Ref<NSButton> TsNewCheckbox(NSString* title, id target, SEL action) {
  auto checkbox = TsNewButton(title, target, action);
  [checkbox setButtonType:NSSwitchButton];
  [checkbox sizeToFit];
  return checkbox;
}

Ref<NSScrollView> TsNewScrollView(NSView* document) {
  auto scrollView = Adopt([[NSScrollView alloc] initWithFrame:[document frame]]);
  [scrollView setHasVerticalScroller:YES];
  [scrollView setBorderType:NSBezelBorder];
  [scrollView setDocumentView:document];
  return scrollView;
}

void TsRow::Add(NSView* view, NSRectEdge edge) {
  NSRect frame;
  NSRect gap;
  NSDivideRect(frame_, &frame, &frame_, [view frame].size.width, edge);
  NSDivideRect(frame_, &gap, &frame_, gap_, edge);
  const CGFloat height = std::min([view frame].size.height, frame.size.height);
  const CGFloat line = frame.size.height < 2 * kTsRowHeight ? frame.size.height : kTsRowHeight;
  frame = NSMakeRect(NSMinX(frame), NSMaxY(frame) - (line + height) / 2, frame.size.width, height);
  const NSUInteger vertical = verticalMask_ == NSViewHeightSizable ? NSViewMinYMargin : verticalMask_;
  [view setFrame:NSIntegralRect(frame)];
  [view setAutoresizingMask:vertical | (edge == NSMinXEdge ? NSViewMaxXMargin : NSViewMinXMargin)];
  [content_ addSubview:view];
}

void TsRow::Fill(NSView* view) {
  [view setFrame:frame_];
  [view setAutoresizingMask:verticalMask_ | NSViewWidthSizable];
  [content_ addSubview:view];
}

TsRow TsRows::Cut(CGFloat height, NSRectEdge edge, NSUInteger verticalMask) {
  NSRect frame;
  NSRect gap;
  NSDivideRect(rest_, &frame, &rest_, height, edge);
  NSDivideRect(rest_, &gap, &rest_, gap_, edge);
  return {content_, frame, verticalMask, gap_};
}
