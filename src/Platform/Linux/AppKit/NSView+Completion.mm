#import <AppKit/AppKit.h>

#include "Base/Ref.h"
#include "Platform/Linux/AppKit/Completion.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"

// GNUstep keeps a view's alpha value, but draws the view opaque. Hide views that are entirely transparent.

@interface NSView (Alpha)
@end

@implementation NSView (Alpha)

- (void)setAlphaValue:(CGFloat)alpha {
  const BOOL wasClear = _alphaValue == 0;
  const BOOL isClear = alpha == 0;
  _alphaValue = alpha;
  if (wasClear != isClear) [self setHidden:isClear];
}

@end

namespace tessaro::platform {

namespace {

ReplacedMethod<BOOL (*)(NSButton*, SEL, NSEvent*)> performKeyEquivalent;

// Whether a text of several lines, or a field with an action of its own, has the keyboard.
bool TakesReturn(id firstResponder) {
  NSTextView* text = As<NSTextView>(firstResponder);
  if (![text isFieldEditor]) return [text isEditable];
  return [As<NSTextField>([text delegate]) action] != nullptr;
}

// GNUstep offers every key to the buttons before the first responder.
BOOL PerformKeyEquivalent(NSButton* button, SEL selector, NSEvent* event) {
  const bool isReturn = [[event charactersIgnoringModifiers] isEqual:@"\r"];
  if (isReturn && TakesReturn([[button window] firstResponder])) return NO;
  return performKeyEquivalent(button, selector, event);
}

}  // namespace

void CompleteViews() { performKeyEquivalent.With([NSButton class], "performKeyEquivalent:", PerformKeyEquivalent); }

}  // namespace tessaro::platform
