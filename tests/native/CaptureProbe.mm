#include "CaptureProbe.h"

#include "Capture/TsAnnotationView.h"
#include "Probe.h"
#include "Utilities/TsScriptValues.h"

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

NSButton* ButtonOf(ProbeArguments args) {
  NSString* title = convertToNSString(args[1]);
  NSView* button = FindView([WindowNamed(convertToNSString(args[0])) contentView], [title](NSView* view) {
    return [view isKindOfClass:[NSButton class]] && [[static_cast<NSButton*>(view) title] isEqual:title];
  });
  return static_cast<NSButton*>(button);
}

// press(window title, button title): whether there is such a button.
void press(ProbeArguments args) {
  @autoreleasepool {
    NSButton* button = ButtonOf(args);
    [button performClick:nil];
    args.GetReturnValue().Set(button != nil);
  }
}

void isEnabled(ProbeArguments args) {
  @autoreleasepool {
    args.GetReturnValue().Set(static_cast<bool>([ButtonOf(args) isEnabled]));
  }
}

// The point of the editor's canvas where an image in its own size has a point from the upper left.
NSPoint CanvasPoint(NSView* canvas, ProbeArguments args, int index) {
  const auto number = [&args](int each) { return args[each].As<v8::Number>()->Value(); };
  return [canvas convertPoint:NSMakePoint(number(index), NSHeight([canvas bounds]) - number(index + 1)) toView:nil];
}

// drag(window title, fromX, fromY, toX, toY)
void drag(ProbeArguments args) {
  @autoreleasepool {
    NSWindow* window = WindowNamed(convertToNSString(args[0]));
    NSView* canvas =
        FindView([window contentView], [](NSView* view) { return [view isKindOfClass:[TsAnnotationView class]]; });
    const auto event = [window](NSEventType type, NSPoint point) {
      return [NSEvent mouseEventWithType:type
                                location:point
                           modifierFlags:0
                               timestamp:0
                            windowNumber:[window windowNumber]
                                 context:nil
                             eventNumber:0
                              clickCount:1
                                pressure:0];
    };
    const NSPoint end = CanvasPoint(canvas, args, 3);
    [canvas mouseDown:event(NSLeftMouseDown, CanvasPoint(canvas, args, 1))];
    [canvas mouseDragged:event(NSLeftMouseDragged, end)];
    [canvas mouseUp:event(NSLeftMouseUp, end)];
  }
}

// write(window title, text): into the field that has the keyboard.
void write(ProbeArguments args) {
  @autoreleasepool {
    NSText* editor = [WindowNamed(convertToNSString(args[0])) fieldEditor:NO forObject:nil];
    [editor insertText:convertToNSString(args[1])];
  }
}

}  // namespace

void AttachCaptureProbe(v8::Local<v8::Object> exports) {
  NODE_SET_METHOD(exports, "press", press);
  NODE_SET_METHOD(exports, "isEnabled", isEnabled);
  NODE_SET_METHOD(exports, "drag", drag);
  NODE_SET_METHOD(exports, "write", write);
}
