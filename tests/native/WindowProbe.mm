#include "WindowProbe.h"

#import <AppKit/AppKit.h>
#import <objc/runtime.h>

#include <algorithm>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Platform/Cocoa.h"
#include "Probe.h"
#import "Toolbar/TsToolbar.h"
#import "Toolbar/TsToolbarController.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"
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

NSNumber* Number(double value) { return [NSNumber numberWithDouble:value]; }

NSArray* Describe(NSRect rect) {
  return @[ Number(NSMinX(rect)), Number(NSMinY(rect)), Number(NSWidth(rect)), Number(NSHeight(rect)) ];
}

NSWindow* WindowTitled(NSString* title) {
  for (NSWindow* window in [NSApp windows]) {
    if ([[window title] isEqualToString:title]) return window;
  }
  return nil;
}

TsToolbarController* Controller(NSDictionary* arguments) {
  return [TsToolbarController toolbarControllerForWindowId:[[arguments objectForKey:@"id"] intValue]];
}

NSToolbarItem* Item(NSDictionary* arguments) {
  for (NSToolbarItem* item in [[Controller(arguments) toolbar] items]) {
    if ([[item itemIdentifier] isEqualToString:[arguments objectForKey:@"item"]]) return item;
  }
  return nil;
}

// ---- Windows

id postBackingChange(id arguments) {
  [[NSNotificationCenter defaultCenter] postNotificationName:NSWindowDidChangeBackingPropertiesNotification
                                                      object:WindowTitled([arguments objectForKey:@"window"])
                                                    userInfo:[arguments objectForKey:@"userInfo"]];
  return nil;
}

TsProbeObserver* BackingObserver() {
  static Forever<Ref<TsProbeObserver>> observer(Adopt([[TsProbeObserver alloc] init]));
  return observer->get();
}

id observeBackingChanges(id) {
  [[NSNotificationCenter defaultCenter] addObserver:BackingObserver()
                                           selector:@selector(note:)
                                               name:NSWindowDidChangeBackingPropertiesNotification
                                             object:nil];
  return nil;
}

id backingChanges(id) { return [BackingObserver() seen]; }

// A notification of another name than those the handler is registered for.
id notifyDirectly(id arguments) {
  NSWindow* window = WindowTitled([arguments objectForKey:@"window"]);
  [[TsWindowUtils sharedInstance]
      windowNotification:[NSNotification notificationWithName:[arguments objectForKey:@"name"] object:window]];
  return nil;
}

id openPanel(id) {
  auto panel = Adopt([[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, 100, 100)
                                                styleMask:NSTitledWindowMask
                                                  backing:NSBackingStoreBuffered
                                                    defer:NO]);
  [panel setReleasedWhenClosed:NO];
  [panel setTitle:@"Panel"];
  [panel makeKeyAndOrderFront:nil];
  static_cast<void>(panel.Leak());
  return nil;
}

id attachSheet(id arguments) {
  NSWindow* window = WindowTitled([arguments objectForKey:@"window"]);
  [window setAttachedSheet:[[arguments objectForKey:@"isAttached"] boolValue] ? WindowTitled(@"Panel") : nil];
  return nil;
}

id windowState(id arguments) {
  NSWindow* window = WindowTitled([arguments objectForKey:@"window"]);
  if (window == nil) return nil;
  NSRect content = [window contentRectForFrameRect:[window frame]];
  return @{
    @"frame" : Describe([window frame]),
    @"content" : Describe(content),
    @"alpha" : Number([[window contentView] alphaValue]),
    @"isContentHidden" : Truth([[window contentView] isHidden]),
    @"firstResponder" : NSStringFromClass([[window firstResponder] class]),
    @"isContentFocused" : Truth([window firstResponder] == [window contentView]),
  };
}

id orderOut(id arguments) {
  [WindowTitled([arguments objectForKey:@"window"]) orderOut:nil];
  return nil;
}

id numberOfWindows(id) { return @[ Number(static_cast<double>([[NSApp windows] count])) ]; }

// ---- Toolbars

NSDictionary* DescribeItem(NSToolbarItem* item) {
  id view = [item view];
  NSButton* button = [view isKindOfClass:[NSButton class]] ? view : nil;
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
    @"minSize" : @[ Number([item minSize].width), Number([item minSize].height) ],
  };
}

TsAddTabView* AddTabView(TsToolbarController* controller) {
  NSTitlebarAccessoryViewController* accessory = [[[controller window] titlebarAccessoryViewControllers] lastObject];
  return static_cast<TsAddTabView*>([accessory view]);
}

id toolbarState(id arguments) {
  TsToolbarController* controller = Controller(arguments);
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

id activate(id arguments) {
  NSToolbarItem* item = Item(arguments);
  NSString* by = [arguments objectForKey:@"by"];
  id sender = item;
  if ([by isEqualToString:@"view"]) sender = [item view];
  if ([by isEqualToString:@"menu"]) sender = [item menuFormRepresentation];
  if ([by isEqualToString:@"nothing"]) sender = Adopt([[NSView alloc] init]).Autoreleased();
  [Controller(arguments) toolbarAction:sender];
  return nil;
}

id validateMenuItem(id arguments) {
  id delegate = [[Controller(arguments) toolbar] delegate];
  return @[ Truth([delegate validateMenuItem:[Item(arguments) menuFormRepresentation]]) ];
}

id insertItem(id arguments) {
  [[Controller(arguments) toolbar] insertItemWithItemIdentifier:[arguments objectForKey:@"item"]
                                                        atIndex:[[arguments objectForKey:@"at"] integerValue]];
  return nil;
}

id removeItem(id arguments) {
  [[Controller(arguments) toolbar] removeItemAtIndex:[[arguments objectForKey:@"at"] integerValue]];
  return nil;
}

id postThemeChange(id) {
  [[NSDistributedNotificationCenter defaultCenter] postNotificationName:@"AppleInterfaceThemeChangedNotification"
                                                                 object:nil
                                                               userInfo:nil
                                                     deliverImmediately:YES];
  return nil;
}

// The colours of the add-tab button, and how many pixels have them.
id addTabColors(id arguments) {
  TsAddTabView* view = AddTabView(Controller(arguments));
  [view setIsHovering:[[arguments objectForKey:@"isHovering"] boolValue]];
  [view setIsDarkMode:[[arguments objectForKey:@"isDarkMode"] boolValue]];
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

// ---- Drags

NSView* Page(NSDictionary* arguments) {
  return FindWebViewDropTarget(WindowTitled([arguments objectForKey:@"window"]));
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

id pageDrags(id) { return PageDrags(); }

// Sends the page what a drag over it would, and gives its answers.
id dragOverPage(id arguments) {
  WatchPage();
  const auto info = Adopt([[TsDraggingInfo alloc] initWithLocation:NSMakePoint(1, 1)]);
  NSPasteboard* pasteboard = [info pasteboard];
  if (id files = [arguments objectForKey:@"files"]) {
    [pasteboard declareTypes:@[ NSFilenamesPboardType ] owner:nil];
    [pasteboard setPropertyList:files forType:NSFilenamesPboardType];
  } else {
    [pasteboard declareTypes:@[ NSStringPboardType ] owner:nil];
    [pasteboard setString:@"text" forType:NSStringPboardType];
  }
  NSView* page = Page(arguments);
  const NSDragOperation entered = [page draggingEntered:info];
  const NSDragOperation updated = [page draggingUpdated:info];
  [page draggingExited:info];
  return @[ @(entered), @(updated), Truth([page performDragOperation:info]) ];
}

id draggingInfo(id) {
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

id dragTitle(id arguments) {
  NSWindow* window = WindowTitled([arguments objectForKey:@"window"]);
  NSPasteboard* pasteboard = [NSPasteboard pasteboardWithUniqueName];
  id delegate = [window delegate];
  PressMouseWith([[arguments objectForKey:@"modifiers"] unsignedIntegerValue], window);
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
  JSON_PROBE(postBackingChange);
  JSON_PROBE(observeBackingChanges);
  JSON_PROBE(backingChanges);
  JSON_PROBE(notifyDirectly);
  JSON_PROBE(openPanel);
  JSON_PROBE(attachSheet);
  JSON_PROBE(windowState);
  JSON_PROBE(orderOut);
  JSON_PROBE(numberOfWindows);
  JSON_PROBE(toolbarState);
  JSON_PROBE(activate);
  JSON_PROBE(validateMenuItem);
  JSON_PROBE(insertItem);
  JSON_PROBE(removeItem);
  JSON_PROBE(postThemeChange);
  JSON_PROBE(addTabColors);
  JSON_PROBE(dragOverPage);
  JSON_PROBE(pageDrags);
  JSON_PROBE(draggingInfo);
  JSON_PROBE(dragTitle);
}
