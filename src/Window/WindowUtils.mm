#include "Window/WindowUtils.h"

#import <objc/runtime.h>

#include <chrono>
#include <string>

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#include "Extensions/TsHostClasses.h"
#include "Platform/Cocoa.h"
#include "Platform/MainQueue.h"
#include "Utilities/TsCallbackSlot.h"
#include "WebView/TsWebContentsView.h"

namespace platform = tessaro::platform;

namespace {

bool Contains(NSView* view, const void* reference) {
  if (view == reference) return true;
  for (NSView* each in [view subviews]) {
    if (Contains(each, reference)) return true;
  }
  return false;
}

NSString* const kDelayedNotification = @"TsDelayedNotification";
constexpr std::chrono::seconds kSettlingTime{5};

// The windows' notifications that script learns of, and their names there.
NSDictionary* EventNames() {
  return @{
    NSWindowDidResignMainNotification : @"did-resign-main",
    NSWindowDidBecomeMainNotification : @"did-become-main",
    NSWindowDidResignKeyNotification : @"did-resign-key",
    NSWindowDidBecomeKeyNotification : @"did-become-key",
  };
}

Ref<NSNotification> DelayedCopyOf(NSNotification* notification) {
  NSMutableDictionary* userInfo = [NSMutableDictionary dictionaryWithDictionary:[notification userInfo]];
  [userInfo setObject:[NSNumber numberWithBool:YES] forKey:kDelayedNotification];
  return Retain([NSNotification notificationWithName:[notification name]
                                              object:[notification object]
                                            userInfo:userInfo]);
}

}  // namespace

NSWindow* TsLivingWindow(const void* reference) {
  if (reference == nullptr) return nil;
  NSArray* windows = [NSApp windows];
  for (NSWindow* window in windows) {
    if (window == reference) return window;
  }
  for (NSWindow* window in windows) {
    if (Contains([window contentView], reference)) return window;
  }
  return nil;
}

@implementation TsWindowUtils

+ (TsWindowUtils*)sharedInstance {
  static Forever<Ref<TsWindowUtils>> shared(Adopt([[TsWindowUtils alloc] init]));
  return shared->get();
}

- (void)dealloc {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  [super dealloc];
}

- (void)registerCallbacks {
  for (NSString* name in EventNames()) [self observe:name with:@selector(windowNotification:)];
  [self observe:NSWindowDidChangeBackingPropertiesNotification with:@selector(windowDidChangeScreenBacking:)];
}

- (void)observe:(NSString*)name with:(SEL)handler {
  [[NSNotificationCenter defaultCenter] addObserver:self selector:handler name:name object:nil];
}

- (void)windowNotification:(NSNotification*)notification {
  NSString* name = [EventNames() objectForKey:[notification name]];
  if (name == nil) {
    TsLogWarning(@"Unknown notification %@", [notification name]);
    return;
  }
  if (!TsIsBrowserWindow([notification object])) return;
  TsCallback(TsSlot::WindowNotification).Call({name, TsObjectHandle{[notification object]}});
}

- (void)windowDidChangeScreenBacking:(NSNotification*)notification {
  if ([[notification userInfo] objectForKey:kDelayedNotification] != nil) return;
  if (!TsIsBrowserWindow([notification object])) return;
  platform::MainQueue::Shared().PostDelayed(kSettlingTime, [delayed = DelayedCopyOf(notification)] {
    TsLogInfo(@"Post delayed notification %@", delayed.get());
    [[NSNotificationCenter defaultCenter] postNotification:delayed];
  });
}

- (void)debugNotification:(NSNotification*)notification {
  TsLogInfo(@"Received Notification: %@", notification);
}

@end

@implementation TsOverlayView

TS_RETAINED(NSColor, backgroundColor, BackgroundColor)

- (void)drawRect:(NSRect)dirty {
  [_backgroundColor set];
  NSRectFill([self frame]);
}

@end

@implementation NSWindow (TsResize)

// From the content's corner rather than the frame's: elsewhere than on macOS a frame has borders at its sides.
- (void)ts_resizeContent:(NSSize)size animate:(BOOL)animate {
  const NSRect content = [self contentRectForFrameRect:[self frame]];
  const NSRect resized = NSMakeRect(NSMinX(content), NSMaxY(content) - size.height, size.width, size.height);
  [self setFrame:[self frameRectForContentRect:resized] display:YES animate:[self isVisible]];
}

@end

bool TsIsBrowserWindow(id window) {
  Class browserWindow = TsHostWindow();
  return browserWindow != Nil && [window isKindOfClass:browserWindow];
}

void TsInstallDelegateMethods() {
  Class delegate = TsHostWindowDelegate();
  if (delegate == Nil) return;
  const std::string encoding = std::string(@encode(BOOL)) + "@:@@" + @encode(NSPoint) + "@";
  class_addMethod(delegate, @selector(window:shouldDragDocumentWithEvent:from:withPasteboard:),
                  reinterpret_cast<IMP>(shouldDragDocumentWithEventMethod), encoding.c_str());
}

void TsListenForWindowNotifications() { [[TsWindowUtils sharedInstance] registerCallbacks]; }

void TsHideWindowContent(NSWindow* window, int milliseconds) {
  [window makeFirstResponder:nil];
  [[window contentView] setAlphaValue:0];
  platform::MainQueue::Shared().PostDelayed(std::chrono::milliseconds(milliseconds), [kept = Retain(window)] {
    NSView* content = [kept contentView];
    [content setAlphaValue:1];
    [kept makeFirstResponder:content];
  });
}
