#import <AppKit/AppKit.h>
#import <objc/runtime.h>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Platform/Cocoa.h"
#include "Probe.h"
#import "WebView/TsDraggingInfo.h"
#include "WebView/TsWebContentsView.h"

@interface NSObject (TsProbeTitleDrag)
- (BOOL)window:(NSWindow*)window
    shouldDragDocumentWithEvent:(NSEvent*)event
                           from:(NSPoint)point
                 withPasteboard:(NSPasteboard*)pasteboard;
@end

namespace {

NSWindow* WindowTitled(NSString* title) {
  for (NSWindow* window in [NSApp windows]) {
    if ([[window title] isEqualToString:title]) return window;
  }
  return nil;
}

// ---- The page's own drag methods, in the order of their calls

NSMutableArray* PageDrags() {
  static Forever<Ref<NSMutableArray>> calls(Adopt([[NSMutableArray alloc] init]));
  return calls->get();
}

template <int index>
struct PageMethod {
  static inline IMP previous = nullptr;

  static NSUInteger Note(id page, SEL selector, id info) {
    [PageDrags() addObject:NSStringFromSelector(selector)];
    return reinterpret_cast<NSUInteger (*)(id, SEL, id)>(previous)(page, selector, info);
  }

  static void Watch(const char* selector) {
    if (previous != nullptr) return;
    const Method method =
        class_getInstanceMethod(NSClassFromString(@"WebContentsViewCocoa"), sel_registerName(selector));
    previous = method_setImplementation(method, reinterpret_cast<IMP>(Note));
  }
};

void WatchPage() {
  PageMethod<0>::Watch("draggingEntered_:");
  PageMethod<1>::Watch("draggingUpdated_:");
  PageMethod<2>::Watch("draggingExited_:");
  PageMethod<3>::Watch("performDragOperation_:");
}

id pageDrags() { return PageDrags(); }

// Sends the page the messages of a drag, and gives its answers.
id dragOverPage(NSString* window, NSArray* files) {
  WatchPage();
  const auto info = Adopt([[TsDraggingInfo alloc] initWithLocation:NSMakePoint(1, 1)]);
  NSString* type = files != nil ? NSFilenamesPboardType : NSStringPboardType;
  [[info pasteboard] declareTypes:@[ type ] owner:nil];
  [[info pasteboard] setPropertyList:files != nil ? static_cast<id>(files) : @"text" forType:type];
  NSView* page = FindWebViewDropTarget(WindowTitled(window));
  const NSDragOperation entered = [page draggingEntered:info];
  const NSDragOperation updated = [page draggingUpdated:info];
  [page draggingExited:info];
  return @[ @(entered), @(updated), Truth([page performDragOperation:info]) ];
}

// Makes a press with these modifiers the application's current event.
void PressMouseWith(NSUInteger modifiers, NSWindow* window) {
  NSEvent* event = [NSEvent mouseEventWithType:NSLeftMouseDragged
                                      location:NSMakePoint(1, 1)
                                 modifierFlags:modifiers
                                     timestamp:0
                                  windowNumber:[window windowNumber]
                                       context:nil
                                   eventNumber:0
                                    clickCount:1
                                      pressure:1];
  [NSApp postEvent:event atStart:YES];
  [NSApp nextEventMatchingMask:NSLeftMouseDraggedMask
                     untilDate:[NSDate distantPast]
                        inMode:NSDefaultRunLoopMode
                       dequeue:YES];
}

// The text, and the addresses with their titles, of the drag of a window's title; nothing when the drag does not begin.
id dragTitle(NSString* title, unsigned modifiers) {
  NSWindow* window = WindowTitled(title);
  NSPasteboard* pasteboard = [NSPasteboard pasteboardWithUniqueName];
  PressMouseWith(modifiers, window);
  id delegate = [window delegate];
  const BOOL begins = [delegate window:window
           shouldDragDocumentWithEvent:[NSApp currentEvent]
                                  from:NSZeroPoint
                        withPasteboard:pasteboard];
  if (!begins) return [NSNull null];
  return @[
    OrNull([pasteboard stringForType:NSStringPboardType]),
    OrNull([pasteboard propertyListForType:@"WebURLsWithTitlesPboardType"])
  ];
}

PROBES("windows", dragOverPage, pageDrags, dragTitle);

}  // namespace
