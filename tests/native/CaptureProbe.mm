#include "Capture/TsAnnotationView.h"
#include "Probe.h"

namespace {

NSWindow* WindowNamed(NSString* title) {
  for (NSWindow* window in [NSApp windows]) {
    if ([window isVisible] && [[window title] isEqual:title]) return window;
  }
  return nil;
}

template <typename Condition>
NSView* FindView(NSView* view, const Condition& condition) {
  if (condition(view)) return view;
  for (NSView* subview in [view subviews]) {
    if (NSView* found = FindView(subview, condition)) return found;
  }
  return nil;
}

NSButton* ButtonOf(NSString* window, NSString* title) {
  NSView* button = FindView([WindowNamed(window) contentView],
                            [title](NSView* view) { return [[As<NSButton>(view) title] isEqual:title]; });
  return static_cast<NSButton*>(button);
}

bool isEnabled(NSString* window, NSString* button) { return [ButtonOf(window, button) isEnabled] != NO; }

// On the editor's canvas, between points that an image in its own size has from the upper left.
void drag(NSString* title, double fromX, double fromY, double toX, double toY) {
  NSWindow* window = WindowNamed(title);
  NSView* canvas = FindView([window contentView], [](NSView* view) { return As<TsAnnotationView>(view) != nil; });
  const auto send = [window, canvas](NSEventType type, SEL handler, double x, double y) {
    const NSPoint point = [canvas convertPoint:NSMakePoint(x, NSHeight([canvas bounds]) - y) toView:nil];
    NSEvent* event = [NSEvent mouseEventWithType:type
                                        location:point
                                   modifierFlags:0
                                       timestamp:0
                                    windowNumber:[window windowNumber]
                                         context:nil
                                     eventNumber:0
                                      clickCount:1
                                        pressure:0];
    [canvas performSelector:handler withObject:event];
  };
  send(NSLeftMouseDown, @selector(mouseDown:), fromX, fromY);
  send(NSLeftMouseDragged, @selector(mouseDragged:), toX, toY);
  send(NSLeftMouseUp, @selector(mouseUp:), toX, toY);
}

// Into the field that has the keyboard.
void insert(NSString* window, NSString* text) { [[WindowNamed(window) fieldEditor:NO forObject:nil] insertText:text]; }

}  // namespace

void AttachCaptureProbe(v8::Local<v8::Object> exports) {
  PROBE(isEnabled);
  PROBE(drag);
  PROBE(insert);
}
