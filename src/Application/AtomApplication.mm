#include "Application/AtomApplication.h"

#import <AppKit/AppKit.h>

#include "Application/KeyCombinations.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsReplaceMethod.h"
#import "Extensions/NSEvent+TsKeyboard.h"
#include "Menu/TsMainMenu.h"
#include "Platform/Cocoa.h"
#include "Platform/Menus.h"
#include "Platform/WindowServer.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsNotificationObserver.h"

@interface NSObject (TsPreviousMethods)
- (void)tsOrigSendEvent:(NSEvent*)event;
@end

namespace {

NSString* const kDispatch = @"TsDispatchNotificationName";
NSString* const kPasteFiles = @"TsPasteFilesIntoCurrentWebContents";
NSString* const kPreviousTab = @"window/set-previous-tab-active";
NSString* const kNextTab = @"window/set-next-tab-active";
NSString* const kFileURLType = @"public.file-url";

// What both methods have been known under from the beginning, although one gives a truth value.
constexpr char kEncoding[] = "V@:@";

// The latest key press with Command or Control that has gone its ordinary way, until the main menu is next searched:
// web contents send back what they have no use for as an event of their own, without its modifiers and key code.
class LastKeyDown {
 public:
  void Remember(NSEvent* event) { event_ = Retain(event); }

  // The event that `event` repeats, or `event` itself. Forgets what was remembered.
  Ref<NSEvent> TakeOriginalOf(NSEvent* event) {
    const Ref<NSEvent> remembered = std::exchange(event_, nullptr);
    return remembered && IsRepeated(remembered, event) ? remembered : Retain(event);
  }

 private:
  static bool IsRepeated(NSEvent* remembered, NSEvent* event) {
    return [event ts_hasNoLocation] && [[remembered ts_characters] isEqualToString:[event ts_characters]];
  }

  Ref<NSEvent> event_;
};

LastKeyDown& LastKeyDownEvent() {
  [[clang::no_destroy]] static LastKeyDown event;
  return event;
}

bool ConsumeForTab(NSString* action) {
  [[NSNotificationCenter defaultCenter] postNotificationName:kDispatch
                                                      object:NSApp
                                                    userInfo:[NSDictionary dictionaryWithObject:action
                                                                                         forKey:@"action"]];
  return true;
}

// Brackets: with Shift they are typed as braces.
NSString* TabActionOfCharacters(NSEvent* event) {
  NSString* characters = [event charactersIgnoringModifiers];
  if ([event ts_holdsModifier:kTsShift]) {
    if ([characters isEqualToString:@"{"]) return kPreviousTab;
    if ([characters isEqualToString:@"}"]) return kNextTab;
  }
  if ([event ts_holdsModifier:kTsOption]) {
    if ([characters isEqualToString:@"["]) return kPreviousTab;
    if ([characters isEqualToString:@"]"]) return kNextTab;
  }
  return nil;
}

bool IsTabArrow(NSEvent* event, unsigned short keyCode) {
  return IsCommandControlAndKeyCodeKey(event, keyCode) || IsCommandOptionAndKeyCodeKey(event, keyCode);
}

BOOL PerformPreviousKeyEquivalent(NSMenu* menu, NSEvent* event) {
  // Sent by selector: not performSelector:, which knows only objects as results.
  const SEL previous = @selector(tsOrigPerformKeyEquivalent:);
  return reinterpret_cast<BOOL (*)(NSMenu*, SEL, NSEvent*)>([menu methodForSelector:previous])(menu, previous, event);
}

// The application menu comes last, so that a later menu can take a key equivalent of its own.
NSArray* MenusInSearchOrder(NSMenu* mainMenu) {
  NSMutableArray* items = [NSMutableArray arrayWithArray:[mainMenu itemArray]];
  if ([items count] == 0) return items;
  [items addObject:[items objectAtIndex:0]];
  [items removeObjectAtIndex:0];
  return items;
}

bool SearchSubmenus(NSMenu* mainMenu, NSEvent* event) {
  for (NSMenuItem* item in MenusInSearchOrder(mainMenu)) {
    if (![item isHidden] && [item hasSubmenu] && [[item submenu] performKeyEquivalent:event]) return true;
  }
  return false;
}

void PatchApplication(Class application) {
  class_addMethod(application, @selector(tsHandleKeyboardEvent:), reinterpret_cast<IMP>(TsHandleKeyboardEvent), "@@:@");
  class_addMethod(application, @selector(tsPasteIfPossible), reinterpret_cast<IMP>(TsPasteIfPossible), "B@:");
  TsReplaceMethod(application, @selector(sendEvent:), @selector(tsOrigSendEvent:), reinterpret_cast<IMP>(TsSendEvent),
                  kEncoding);
}

void PatchMenus(Class menu) {
  TsReplaceMethod(menu, @selector(performKeyEquivalent:), @selector(tsOrigPerformKeyEquivalent:),
                  reinterpret_cast<IMP>(TsPerformKeyEquivalent), kEncoding);
}

// Script has missed what happened to the modifiers while another application was active.
void ReportModifiersWhenActive() {
  TsObserveOnMainQueue(NSApplicationDidBecomeActiveNotification, [](NSNotification*) {
    if (NSEvent* event = [NSApp currentEvent]) ProcessKeyboardModifierKeysEvent(event);
  });
}

}  // namespace

void TsInstallApplicationPatch() {
  if (Class application = [NSApp class]) {
    PatchApplication(application);
  } else {
    TsLogError(@"Cannot patch as I didn't find application class");
  }
  if (tessaro::platform::IsWindowServerAvailable()) tessaro::platform::CompleteMenus();
  if (Class menu = objc_getClass("NSMenu")) {
    PatchMenus(menu);
  } else {
    TsLogError(@"Cannot patch as I didn't find NSMenu class");
  }
  ReportModifiersWhenActive();
}

void TsSendEvent(NSApplication* application, SEL, NSEvent* event) {
  const bool isSpecial = TsIsSpecialEvent(event);
  if (isSpecial && [[application mainMenu] performKeyEquivalent:event]) return;
  if (!isSpecial && [event type] == kTsFlagsChanged) ProcessKeyboardModifierKeysEvent(event);
  // Dispatching may be the last that anybody does with it.
  const auto kept = Retain(event);
  [application tsOrigSendEvent:event];
  if (IsEventForKeyEquivalent(event)) LastKeyDownEvent().Remember(event);
}

BOOL TsPerformKeyEquivalent(NSMenu* menu, SEL, NSEvent* event) {
  if (menu != [NSApp mainMenu]) return PerformPreviousKeyEquivalent(menu, event);
  const Ref<NSEvent> original = LastKeyDownEvent().TakeOriginalOf(event);
  if (!IsEventForKeyEquivalent(original)) return NO;
  if (ProcessKeyboardEvent(original)) return YES;
  TsPostAppNeedsUpdateNotification(menu, original);
  return SearchSubmenus(menu, original);
}

bool ProcessKeyboardEvent(NSEvent* event) {
  const NSUInteger type = [event type];
  if (type != kTsKeyDown && type != kTsKeyUp) return false;

  NSString* action = [event ts_holdsModifier:kTsCommand] ? TabActionOfCharacters(event) : nil;
  if (action != nil) return type == kTsKeyUp || ConsumeForTab(action);

  NSLog(@">>> command+option: %d %u %@", IsCommandOptionKeyPressed(event), [event ts_virtualKeyCode], event);
  if (IsTabArrow(event, kTsKeyLeftArrow)) return ConsumeForTab(kPreviousTab);
  if (IsTabArrow(event, kTsKeyRightArrow)) return ConsumeForTab(kNextTab);
  return false;
}

void ProcessKeyboardModifierKeysEvent(NSEvent* event) {
  const TsCallbackSlot& callback = TsCallbackSlots::Shared().keyboardModifierKeys;
  if (!callback.IsSet() || [event ts_hasNoLocation]) return;
  const NSUInteger flags = [event ts_settledModifierFlags];
  const auto holds = [flags](NSUInteger modifier) { return (flags & modifier) != 0; };
  callback.Call({holds(kTsFunction), holds(kTsControl), holds(kTsOption), holds(kTsCommand), holds(kTsShift),
                 holds(kTsCapsLock), holds(kTsHelp), holds(kTsNumericPad)});
}

NSEvent* TsHandleKeyboardEvent(id, SEL, NSEvent* event) { return event; }

bool TsPasteIfPossible(id, SEL) {
  if (!hasFilesInPasteboard(kFileURLType)) return false;
  [[NSNotificationCenter defaultCenter] postNotificationName:kPasteFiles object:nil];
  return true;
}

bool hasFilesInPasteboard(NSString* type) {
  for (NSPasteboardItem* item in [[NSPasteboard generalPasteboard] pasteboardItems]) {
    for (NSString* offered in [item types]) {
      if ([offered isEqualToString:type]) return true;
    }
  }
  return false;
}

NSDictionary* TsModifierKeys() { return [[NSApp currentEvent] ts_modifierDescription]; }
