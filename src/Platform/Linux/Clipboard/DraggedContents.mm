#import <AppKit/AppKit.h>

#include "Platform/Linux/AppKit/Completion.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"
#include "Platform/Linux/Clipboard/PasteboardTargets.h"

namespace tessaro::platform {

namespace {

constexpr char kDragged[] = "XdndSelection";

// Short: the application waits while the user drags.
constexpr SelectionLimits kLimits{
    .answer = std::chrono::milliseconds(500), .whole = std::chrono::milliseconds(1000), .bytes = 16 << 20};

// Clears the pasteboard when the other program sends nothing: it may hold the files of an earlier drag.
void FillDragPasteboard() {
  const auto fetched = ForeignData(kDragged, NSFilenamesPboardType, kLimits);
  const Ref<NSData> files = fetched.value_or(nullptr);
  const bool mayHaveText = fetched && !files;
  const Ref<NSData> text =
      mayHaveText ? ForeignData(kDragged, NSStringPboardType, kLimits).value_or(nullptr) : Ref<NSData>();
  NSPasteboard* pasteboard = [NSPasteboard pasteboardWithName:NSDragPboard];
  if (files) {
    [pasteboard declareTypes:@[ NSFilenamesPboardType ] owner:nil];
    [pasteboard setData:files forType:NSFilenamesPboardType];
  } else if (text) {
    [pasteboard declareTypes:@[ NSStringPboardType ] owner:nil];
    [pasteboard setString:TextOfData(text) forType:NSStringPboardType];
  } else {
    [pasteboard declareTypes:@[] owner:nil];
  }
}

ReplacedMethod<void (*)(id, SEL, void*)> setupDragInfo;
ReplacedMethod<void (*)(id, SEL)> resetDragInfo;
ReplacedMethod<void (*)(NSWindow*, SEL, NSEvent*)> sendEvent;

void SetupDragInfo(id dragView, SEL selector, void* xEvent) {
  setupDragInfo(dragView, selector, xEvent);
  FillDragPasteboard();
}

// GNUstep releases the drag pasteboard before the view gets -draggingExited:.
void KeepDragInfo(id, SEL) {}

// GNUstep sends -draggingEntered: at the first move. It would take the entering event, which has no location, for a
// move to the corner of the window.
void SendEvent(NSWindow* window, SEL selector, NSEvent* event) {
  const bool isEntering = [event type] == NSAppKitDefined && [event subtype] == GSAppKitDraggingEnter;
  if (isEntering && NSEqualPoints([event locationInWindow], NSZeroPoint)) return;
  sendEvent(window, selector, event);
}

}  // namespace

void CompleteDrags() {
  Class dragView = NSClassFromString(@"XGDragView");
  setupDragInfo.With(dragView, "setupDragInfoFromXEvent:", SetupDragInfo);
  resetDragInfo.With(dragView, "resetDragInfo", KeepDragInfo);
  sendEvent.With([NSWindow class], "sendEvent:", SendEvent);
}

}  // namespace tessaro::platform
