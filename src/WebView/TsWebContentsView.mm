#include "WebView/TsWebContentsView.h"

#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsReplaceMethod.h"
#include "Extensions/TsHostClasses.h"
#include "Pasteboard/TsPasteboard.h"
#include "Platform/Cocoa.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsPageState.h"

// The dragging information of a programmatic drop: a copy to a point, without a source window.
@interface TsDraggingInfo : NSObject <NSDraggingInfo> {
  NSPasteboard* _pasteboard;
  NSPoint _draggingLocation;
}

@property(retain) NSPasteboard* pasteboard;
@property NSPoint draggingLocation;

// Enumerations in Cocoa, which GNUstep lacks.
- (NSInteger)draggingFormation;
- (void)setDraggingFormation:(NSInteger)formation;
- (NSInteger)springLoadingHighlight;

@end

@implementation TsDraggingInfo

@synthesize pasteboard = _pasteboard;
@synthesize draggingLocation = _draggingLocation;

// With the system's drag pasteboard.
- (instancetype)initWithLocation:(NSPoint)location {
  self = [super init];
  if (self == nil) return nil;
  _draggingLocation = location;
  [self setPasteboard:[NSPasteboard pasteboardWithName:NSDragPboard]];
  return self;
}

- (void)dealloc {
  [self setPasteboard:nil];
  [super dealloc];
}

- (NSWindow*)draggingDestinationWindow {
  return nil;
}

- (NSDragOperation)draggingSourceOperationMask {
  return NSDragOperationCopy;
}

- (NSPoint)draggedImageLocation {
  return [self draggingLocation];
}

- (NSImage*)draggedImage {
  return nil;
}

- (NSPasteboard*)draggingPasteboard {
  return [self pasteboard];
}

- (id)draggingSource {
  return self;
}

- (NSInteger)draggingSequenceNumber {
  return 0;
}

- (void)slideDraggedImageTo:(NSPoint)point {
  TsLogDebug(@"slideDraggedImageTo: %@", NSStringFromPoint(point));
}

- (NSArray*)namesOfPromisedFilesDroppedAtDestination:(NSURL*)destination {
  TsLogDebug(@"namesOfPromisedFilesDroppedAtDestination");
  return [NSArray array];
}

// ---- Methods of Cocoa's protocol that GNUstep lacks

- (NSInteger)draggingFormation {
  TsLogDebug(@"draggingFormation");
  return 0;
}

- (void)setDraggingFormation:(NSInteger)formation {
  TsLogDebug(@"setDraggingFormation: %ld", static_cast<long>(formation));
}

- (BOOL)animatesToDestination {
  return NO;
}

- (void)setAnimatesToDestination:(BOOL)animates {
}

- (NSInteger)numberOfValidItemsForDrop {
  return 0;
}

- (void)setNumberOfValidItemsForDrop:(NSInteger)number {
}

// A programmatic drop has no items to enumerate.
- (void)enumerateDraggingItemsWithOptions:(NSUInteger)options
                                  forView:(NSView*)view
                                  classes:(NSArray*)classes
                            searchOptions:(NSDictionary*)searchOptions
                               usingBlock:(__attribute__((noescape))TsDraggingItemBlock)block {
  TsLogDebug(@"enumerateDraggingItemsWithOptions!");
}

- (NSInteger)springLoadingHighlight {
  return 0;
}

- (void)resetSpringLoading {
}

@end

// The host view's own methods, after the exchange.
@interface NSObject (TsWebContentsViewAliases)
- (NSDragOperation)draggingEntered_:(id<NSDraggingInfo>)info;
- (NSDragOperation)draggingUpdated_:(id<NSDraggingInfo>)info;
- (void)draggingExited_:(id<NSDraggingInfo>)info;
- (BOOL)performDragOperation_:(id<NSDraggingInfo>)info;
@end

namespace {

constexpr int kMostSuperviews = 101;

Class WebContentsView() { return NSClassFromString(@"WebContentsViewCocoa"); }

NSView* FirstSubviewOfKind(NSView* view, Class kind) {
  for (NSView* each in [view subviews]) {
    if ([each isKindOfClass:kind]) return each;
  }
  return nil;
}

NSView* DropTargetAroundFocus(NSWindow* window) {
  NSView* view = As<NSView>([window firstResponder]);
  for (int tested = 0; view != nil && tested < kMostSuperviews; ++tested, view = [view superview]) {
    if ([view isKindOfClass:WebContentsView()]) return view;
  }
  return nil;
}

NSView* DropTargetFromTop(NSWindow* window) {
  Class inspectable = TsHostInspectableWebContentsView();
  for (NSView* each in [[window contentView] subviews]) {
    if (![each isKindOfClass:inspectable]) continue;
    if (NSView* target = FirstSubviewOfKind(each, WebContentsView())) return target;
  }
  return nil;
}

// Always a copy, whatever the page answers: script may accept the files.
NSDragOperation TsDraggingEntered(id view, SEL, id<NSDraggingInfo> info) {
  CallCallback(@"dragging-entered", info);
  [view draggingEntered_:info];
  return NSDragOperationCopy;
}

NSDragOperation TsDraggingUpdated(id view, SEL, id<NSDraggingInfo> info) {
  CallCallback(@"dragging-updated", info);
  [view draggingUpdated_:info];
  return NSDragOperationCopy;
}

void TsDraggingExited(id view, SEL, id<NSDraggingInfo> info) {
  CallCallback(@"dragging-exited", info);
  [view draggingExited_:info];
}

BOOL TsPerformDragOperation(id view, SEL, id<NSDraggingInfo> info) {
  CallCallback(@"perform-drag-operation", info);
  return [view performDragOperation_:info];
}

template <typename Method>
void Exchange(SEL selector, SEL alias, Method method) {
  TsReplaceMethod(WebContentsView(), selector, alias, reinterpret_cast<IMP>(method));
}

}  // namespace

void TsInstallWebContentsViewPatch() {
  if (WebContentsView() == Nil) {
    TsLogError(@"Cannot patch as I didn't find application class");
    return;
  }
  Exchange(@selector(draggingEntered:), @selector(draggingEntered_:), TsDraggingEntered);
  Exchange(@selector(draggingExited:), @selector(draggingExited_:), TsDraggingExited);
  Exchange(@selector(draggingUpdated:), @selector(draggingUpdated_:), TsDraggingUpdated);
  Exchange(@selector(performDragOperation:), @selector(performDragOperation_:), TsPerformDragOperation);
  TsLogDebug(@"Installed patch!");
}

void CallCallback(NSString* eventName, id<NSDraggingInfo> info) {
  const TsCallbackSlot& callback = TsCallback(TsSlot::DragAndDrop);
  if (!callback.IsSet()) return;
  if (eventName == nil) {
    TsLogWarning(@"Need event name.");
    return;
  }
  NSArray* paths = [[info draggingPasteboard] propertyListForType:NSFilenamesPboardType];
  if ([paths count] == 0) return;
  NSString* json = TsConvertToJSONString(paths);
  if (json == nil) {
    TsLogWarning(@"Couldn't convert to JSON");
    return;
  }
  callback.Call({eventName, TsObjectHandle{[info draggingDestinationWindow]}, json});
}

NSView* FindWebViewDropTarget(NSWindow* window) {
  if (NSView* target = DropTargetAroundFocus(window)) {
    TsLogDebug(@"FindWebViewDropTarget: Found view from firstResponder.");
    return target;
  }
  if (NSView* target = DropTargetFromTop(window)) {
    TsLogDebug(@"FindWebViewDropTarget: Found view from the top.");
    return target;
  }
  TsLogWarning(@"FindWebViewDropTarget: Unable to find drop target.");
  return nil;
}

bool DropFiles(NSWindow* window, NSPoint point, NSArray* paths) {
  NSView* target = FindWebViewDropTarget(window);
  if (target == nil) return false;
  const NSRect frame = [[window contentView] frame];
  if (!NSPointInRect(point, frame)) {
    TsLogInfo(@"Unable to drop files as %@ is not in %@", NSStringFromPoint(point), NSStringFromRect(frame));
  }
  const auto info = Adopt([[TsDraggingInfo alloc] initWithLocation:point]);
  [[info pasteboard] declareTypes:[NSArray arrayWithObject:NSFilenamesPboardType] owner:nil];
  [[info pasteboard] setPropertyList:paths forType:NSFilenamesPboardType];
  [target draggingEntered_:info];
  [target draggingUpdated_:info];
  return [target performDragOperation_:info];
}

void PrintPasteboard(NSString* label, NSPasteboard* pasteboard) {
  for (NSPasteboardItem* item in [pasteboard pasteboardItems]) {
    for (NSString* type in [item types]) TsLogDebug(@"%@: %@ = %@", label, type, [item stringForType:type]);
  }
}

BOOL shouldDragDocumentWithEventMethod(id delegate, SEL, NSWindow*, NSEvent*, NSPoint, NSPasteboard* pasteboard) {
  const bool isOptionHeld = ([[NSApp currentEvent] modifierFlags] & NSAlternateKeyMask) != 0;
  NSString* title = GetCurrentTitle();
  NSString* url = isOptionHeld ? GetCurrentWebURL() : GetCurrentURL();
  if (title == nil || url == nil) return NO;
  [pasteboard ts_declareURLPasteboardWithAdditionalTypes:nil owner:delegate];
  [pasteboard ts_setURL:url withTitle:title];
  return YES;
}
