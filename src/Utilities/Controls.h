#pragma once

#import <AppKit/AppKit.h>

#include "Base/Ref.h"

// The controls of the module's windows, and their layout in rows. Main thread only.

inline constexpr CGFloat kTsMargin = 16;
inline constexpr CGFloat kTsGap = 8;
inline constexpr CGFloat kTsRowHeight = 28;

// A text that the user can't change. Without a width it is as wide as its text.
[[nodiscard]] Ref<NSTextField> TsNewLabel(NSString* text, CGFloat width = 0);

// A push button, as wide as its title, or as `leastWidth`. The key equivalent may add to its width.
[[nodiscard]] Ref<NSButton> TsNewButton(NSString* title, id target, SEL action, NSString* key = @"",
                                        CGFloat leastWidth = 70);

[[nodiscard]] Ref<NSButton> TsNewCheckbox(NSString* title, id target = nil, SEL action = nullptr);

// `document` in a bezelled view that scrolls vertically.
[[nodiscard]] Ref<NSScrollView> TsNewScrollView(NSView* document);

// A strip of a window's content, filled from its ends towards the middle. A view that is lower than the strip is
// centred in it; beside a view of several lines it is level with the first one.
class TsRow {
 public:
  TsRow(NSView* content, NSRect frame, NSUInteger verticalMask, CGFloat gap)
      : content_(content), frame_(frame), verticalMask_(verticalMask), gap_(gap) {}

  // As wide as the view is.
  void AddLeft(NSView* view) { Add(view, NSMinXEdge); }
  void AddRight(NSView* view) { Add(view, NSMaxXEdge); }

  // The view takes the rest of the strip, and grows with the window.
  void Fill(NSView* view);

  // Leaves as much room at the left as a view of that width would take.
  void Indent(CGFloat width) {
    frame_.origin.x += width + gap_;
    frame_.size.width -= width + gap_;
  }

  [[nodiscard]] NSSize Size() const { return frame_.size; }

 private:
  void Add(NSView* view, NSRectEdge edge);

  NSView* content_;
  NSRect frame_;
  NSUInteger verticalMask_;
  CGFloat gap_;
};

// Divides a window's content into rows, taken from the top and from the bottom. One row, the last, may take the rest,
// and grows with the window.
class TsRows {
 public:
  explicit TsRows(NSView* content, CGFloat margin = kTsMargin, CGFloat gap = kTsGap)
      : content_(content), gap_(gap), rest_(NSInsetRect([content bounds], margin, margin)) {}

  [[nodiscard]] TsRow FromTop(CGFloat height = kTsRowHeight) { return Cut(height, NSMaxYEdge, NSViewMinYMargin); }
  [[nodiscard]] TsRow FromBottom(CGFloat height = kTsRowHeight) { return Cut(height, NSMinYEdge, NSViewMaxYMargin); }
  [[nodiscard]] TsRow Rest() const { return {content_, rest_, NSViewHeightSizable, gap_}; }

 private:
  [[nodiscard]] TsRow Cut(CGFloat height, NSRectEdge edge, NSUInteger verticalMask);

  NSView* content_;
  CGFloat gap_;
  NSRect rest_;
};
