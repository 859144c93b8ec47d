#import <AppKit/AppKit.h>
#import <objc/runtime.h>

#include <algorithm>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Platform/Cocoa.h"
#include "Probe.h"
#import "Toolbar/TsToolbar.h"
#import "Toolbar/TsToolbarController.h"
#import "WebView/TsDraggingInfo.h"
#include "WebView/TsWebContentsView.h"
#include "Window/WindowUtils.h"

// What GNUstep does when it shows a sheet, without waiting for the sheet's end.
@interface NSWindow (TsProbe)
- (void)setAttachedSheet:(NSWindow*)sheet;
@end

@interface NSObject (TsProbeTitleDrag)
- (BOOL)window:(NSWindow*)window
    shouldDragDocumentWithEvent:(NSEvent*)event
                           from:(NSPoint)point
                 withPasteboard:(NSPasteboard*)pasteboard;
@end

// Notes the notifications of one name.
@interface TsProbeObserver : NSObject {
  Ref<NSMutableArray> _seen;
}
- (NSArray*)seen;
@end

@implementation TsProbeObserver

- (instancetype)init {
  self = [super init];
  if (self) _seen = Adopt([[NSMutableArray alloc] init]);
  return self;
}

- (void)note:(NSNotification*)notification {
  NSDictionary* userInfo = [notification userInfo];
  [_seen addObject:userInfo != nil ? userInfo : @{}];
}

- (NSArray*)seen {
  return [NSArray arrayWithArray:_seen];
}

@end

namespace {

NSArray* Describe(NSRect rect) { return @[ @(NSMinX(rect)), @(NSMinY(rect)), @(NSWidth(rect)), @(NSHeight(rect)) ]; }

NSWindow* WindowTitled(NSString* title) {
  for (NSWindow* window in [NSApp windows]) {
    if ([[window title] isEqualToString:title]) return window;
  }
  return nil;
}

TsToolbarController* Controller(int windowId) { return [TsToolbarController toolbarControllerForWindowId:windowId]; }

NSToolbarItem* Item(int windowId, NSString* identifier) {
  for (NSToolbarItem* item in [[Controller(windowId) toolbar] items]) {
    if ([[item itemIdentifier] isEqualToString:identifier]) return item;
  }
  return nil;
}

// ---- Windows

void postBackingChange(NSString* window, NSDictionary* userInfo) {
  [[NSNotificationCenter defaultCenter] postNotificationName:NSWindowDidChangeBackingPropertiesNotification
                                                      object:WindowTitled(window)
                                                    userInfo:userInfo];
}

TsProbeObserver* BackingObserver() {
  static Forever<Ref<TsProbeObserver>> observer(Adopt([[TsProbeObserver alloc] init]));
  return observer->get();
}

void observeBackingChanges() {
  [[NSNotificationCenter defaultCenter] addObserver:BackingObserver()
                                           selector:@selector(note:)
                                               name:NSWindowDidChangeBackingPropertiesNotification
                                             object:nil];
}

id backingChanges() { return [BackingObserver() seen]; }

// A notification of another name than those the handler is registered for.
void notifyDirectly(NSString* window, NSString* name) {
  [[TsWindowUtils sharedInstance] windowNotification:[NSNotification notificationWithName:name
                                                                                   object:WindowTitled(window)]];
}

void openPanel() {
  auto panel = Adopt([[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, 100, 100)
                                                styleMask:NSTitledWindowMask
                                                  backing:NSBackingStoreBuffered
                                                    defer:NO]);
  [panel setReleasedWhenClosed:NO];
  [panel setTitle:@"Panel"];
  [panel makeKeyAndOrderFront:nil];
  static_cast<void>(panel.Leak());
}

void attachSheet(NSString* window, bool isAttached) {
  [WindowTitled(window) setAttachedSheet:isAttached ? WindowTitled(@"Panel") : nil];
}

id windowState(NSString* title) {
  NSWindow* window = WindowTitled(title);
  if (window == nil) return nil;
  return @{
    @"frame" : Describe([window frame]),
    @"content" : Describe([window contentRectForFrameRect:[window frame]]),
    @"alpha" : @([[window contentView] alphaValue]),
    @"isContentHidden" : Truth([[window contentView] isHidden]),
    @"firstResponder" : NSStringFromClass([[window firstResponder] class]),
    @"isContentFocused" : Truth([window firstResponder] == [window contentView]),
  };
}

void orderOut(NSString* window) { [WindowTitled(window) orderOut:nil]; }

int numberOfWindows() { return static_cast<int>([[NSApp windows] count]); }

// ---- Toolbars

NSDictionary* DescribeItem(NSToolbarItem* item) {
  id view = [item view];
  NSButton* button = As<NSButton>(view);
  const NSRect inWindow = view != nil ? [view convertRect:[view bounds] toView:nil] : NSZeroRect;
  return @{
    @"identifier" : [item itemIdentifier],
    @"class" : NSStringFromClass([item class]),
    @"label" : OrNull([item label]),
    @"paletteLabel" : OrNull([item paletteLabel]),
    @"toolTip" : OrNull([item toolTip]),
    @"image" : OrNull([[item image] name]),
    @"isTemplate" : Truth([[item image] isTemplate]),
    @"view" : OrNull(view != nil ? NSStringFromClass([view class]) : nil),
    @"viewFrame" : Describe(inWindow),
    @"buttonImage" : OrNull([[button image] name]),
    @"isButtonEnabled" : Truth([button isEnabled]),
    @"isEnabled" : Truth([item isEnabled]),
    @"menuTitle" : OrNull([[item menuFormRepresentation] title]),
    @"minSize" : @[ @([item minSize].width), @([item minSize].height) ],
  };
}

TsAddTabView* AddTabView(TsToolbarController* controller) {
  NSTitlebarAccessoryViewController* accessory = [[[controller window] titlebarAccessoryViewControllers] lastObject];
  return static_cast<TsAddTabView*>([accessory view]);
}

id toolbarState(int windowId) {
  TsToolbarController* controller = Controller(windowId);
  if (controller == nil) return nil;
  TsToolbar* toolbar = [controller toolbar];
  NSMutableArray* items = [NSMutableArray array];
  for (NSToolbarItem* item in [toolbar items]) [items addObject:DescribeItem(item)];
  TsAddTabView* addTab = AddTabView(controller);
  return @{
    @"identifier" : [toolbar identifier],
    @"items" : items,
    @"allowed" : [[toolbar delegate] toolbarAllowedItemIdentifiers:toolbar],
    @"default" : [[toolbar delegate] toolbarDefaultItemIdentifiers:toolbar],
    @"selectable" : [[toolbar delegate] toolbarSelectableItemIdentifiers:toolbar],
    @"selected" : OrNull([toolbar selectedItemIdentifier]),
    @"allowsExtensionItems" : Truth([toolbar allowsExtensionItems]),
    @"allowsUserCustomization" : Truth([toolbar allowsUserCustomization]),
    @"autosavesConfiguration" : Truth([toolbar autosavesConfiguration]),
    @"showsBaselineSeparator" : Truth([toolbar showsBaselineSeparator]),
    @"isPaletteRunning" : Truth([toolbar customizationPaletteIsRunning]),
    @"needToShowAddTabButton" : Truth([toolbar needToShowAddTabButton]),
    @"isAddTabShowing" : Truth([controller isAddTabViewShowing]),
    @"addTab" : @{
      @"frame" : Describe([addTab convertRect:[addTab bounds] toView:nil]),
      @"isHovering" : Truth([addTab isHovering]),
      @"isDarkMode" : Truth([addTab isDarkMode]),
      @"acceptsFirstMouse" : Truth([addTab acceptsFirstMouse:nil]),
    },
  };
}

// By the item, its view, its menu item, or by nothing of the toolbar's.
void activate(int windowId, NSString* identifier, NSString* by) {
  NSToolbarItem* item = Item(windowId, identifier);
  id sender = item;
  if ([by isEqualToString:@"view"]) sender = [item view];
  if ([by isEqualToString:@"menu"]) sender = [item menuFormRepresentation];
  if ([by isEqualToString:@"nothing"]) sender = Adopt([[NSView alloc] init]).Autoreleased();
  [Controller(windowId) toolbarAction:sender];
}

bool validateMenuItem(int windowId, NSString* identifier) {
  id delegate = [[Controller(windowId) toolbar] delegate];
  return [delegate validateMenuItem:[Item(windowId, identifier) menuFormRepresentation]] != NO;
}

void insertItem(int windowId, NSString* identifier, int index) {
  [[Controller(windowId) toolbar] insertItemWithItemIdentifier:identifier atIndex:index];
}

void removeItem(int windowId, int index) { [[Controller(windowId) toolbar] removeItemAtIndex:index]; }

void postThemeChange() {
  [[NSDistributedNotificationCenter defaultCenter] postNotificationName:@"AppleInterfaceThemeChangedNotification"
                                                                 object:nil
                                                               userInfo:nil
                                                     deliverImmediately:YES];
}

// The colours of the add-tab button, and how many pixels have them.
id addTabColors(int windowId, bool isHovering, bool isDarkMode) {
  TsAddTabView* view = AddTabView(Controller(windowId));
  [view setIsHovering:isHovering];
  [view setIsDarkMode:isDarkMode];
  const auto canvas = Adopt([[NSImage alloc] initWithSize:[view bounds].size]);
  [canvas lockFocus];
  [view drawRect:[view bounds]];
  auto pixels = Adopt([[NSBitmapImageRep alloc] initWithFocusedViewRect:[view bounds]]);
  [canvas unlockFocus];
  NSMutableDictionary* counts = [NSMutableDictionary dictionary];
  for (NSInteger y = 0; y < [pixels pixelsHigh]; ++y) {
    for (NSInteger x = 0; x < [pixels pixelsWide]; ++x) {
      NSColor* color = [pixels colorAtX:x y:y];
      if ([color alphaComponent] == 0) continue;
      const auto byte = [](CGFloat component) { return static_cast<int>(component * 255 + 0.5); };
      NSString* name = [NSString stringWithFormat:@"%02x%02x%02x", byte([color redComponent]),
                                                  byte([color greenComponent]), byte([color blueComponent])];
      [counts setObject:@([[counts objectForKey:name] intValue] + 1) forKey:name];
    }
  }
  return counts;
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

// Sends the page what a drag over it would, and gives its answers.
id dragOverPage(NSString* window, NSArray* files) {
  WatchPage();
  const auto info = Adopt([[TsDraggingInfo alloc] initWithLocation:NSMakePoint(1, 1)]);
  NSPasteboard* pasteboard = [info pasteboard];
  if (files != nil) {
    [pasteboard declareTypes:@[ NSFilenamesPboardType ] owner:nil];
    [pasteboard setPropertyList:files forType:NSFilenamesPboardType];
  } else {
    [pasteboard declareTypes:@[ NSStringPboardType ] owner:nil];
    [pasteboard setString:@"text" forType:NSStringPboardType];
  }
  NSView* page = FindWebViewDropTarget(WindowTitled(window));
  const NSDragOperation entered = [page draggingEntered:info];
  const NSDragOperation updated = [page draggingUpdated:info];
  [page draggingExited:info];
  return @[ @(entered), @(updated), Truth([page performDragOperation:info]) ];
}

id draggingInfo() {
  auto info = Adopt([[TsDraggingInfo alloc] initWithLocation:NSMakePoint(3, 4)]);
  [info setDraggingFormation:5];
  [info setAnimatesToDestination:YES];
  [info setNumberOfValidItemsForDrop:7];
  [info resetSpringLoading];
  [info slideDraggedImageTo:NSMakePoint(1, 2)];
  return @{
    @"window" : OrNull([info draggingDestinationWindow]),
    @"mask" : @([info draggingSourceOperationMask]),
    @"location" : NSStringFromPoint([info draggingLocation]),
    @"imageLocation" : NSStringFromPoint([info draggedImageLocation]),
    @"image" : OrNull([info draggedImage]),
    @"pasteboard" : [[info draggingPasteboard] name],
    @"isItsOwnSource" : Truth([info draggingSource] == info.get()),
    @"sequence" : @([info draggingSequenceNumber]),
    @"promised" : [info namesOfPromisedFilesDroppedAtDestination:nil],
    @"formation" : @([info draggingFormation]),
    @"animates" : Truth([info animatesToDestination]),
    @"valid" : @([info numberOfValidItemsForDrop]),
  };
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

id dragTitle(NSString* title, unsigned modifiers) {
  NSWindow* window = WindowTitled(title);
  NSPasteboard* pasteboard = [NSPasteboard pasteboardWithUniqueName];
  id delegate = [window delegate];
  PressMouseWith(modifiers, window);
  const BOOL begins = [delegate window:window
           shouldDragDocumentWithEvent:[NSApp currentEvent]
                                  from:NSZeroPoint
                        withPasteboard:pasteboard];
  NSDictionary* result = @{
    @"begins" : Truth(begins),
    @"text" : OrNull(begins ? [pasteboard stringForType:NSStringPboardType] : nil),
    @"titles" : OrNull(begins ? [pasteboard propertyListForType:@"WebURLsWithTitlesPboardType"] : nil),
  };
  [pasteboard releaseGlobally];
  return result;
}

}  // namespace

void AttachWindowProbe(v8::Local<v8::Object> exports) {
  PROBE(postBackingChange);
  PROBE(observeBackingChanges);
  PROBE(backingChanges);
  PROBE(notifyDirectly);
  PROBE(openPanel);
  PROBE(attachSheet);
  PROBE(windowState);
  PROBE(orderOut);
  PROBE(numberOfWindows);
  PROBE(toolbarState);
  PROBE(activate);
  PROBE(validateMenuItem);
  PROBE(insertItem);
  PROBE(removeItem);
  PROBE(postThemeChange);
  PROBE(addTabColors);
  PROBE(dragOverPage);
  PROBE(pageDrags);
  PROBE(draggingInfo);
  PROBE(dragTitle);
}
