#include "Capture/TsAnnotationView.h"
#include "Probe.h"

namespace {

NSWindow* WindowNamed(NSString* title) {
  for (NSWindow* window in [NSApp windows]) {
    if ([window isVisible] && [[window title] isEqual:title]) return window;
  }
  return nil;
}

TsAnnotationView* CanvasIn(NSView* view) {
  if (TsAnnotationView* canvas = As<TsAnnotationView>(view)) return canvas;
  for (NSView* subview in [view subviews]) {
    if (TsAnnotationView* canvas = CanvasIn(subview)) return canvas;
  }
  return nil;
}

// On the editor's canvas, between points that an image in its own size has from the upper left.
void drag(NSString* title, double fromX, double fromY, double toX, double toY) {
  NSWindow* window = WindowNamed(title);
  NSView* canvas = CanvasIn([window contentView]);
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

PROBES("capture", drag, insert);

}  // namespace
