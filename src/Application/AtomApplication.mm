#include "Application/AtomApplication.h"

#import <AppKit/AppKit.h>
#import <Foundation/Foundation.h>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsReplaceMethod.h"
#import "Extensions/NSEvent+TsKeyboard.h"
#include "Menu/TsMainMenu.h"
#include "Platform/Cocoa.h"
#include "Platform/WindowServer.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsNotificationObserver.h"

namespace {

struct Modifiers {
  NSUInteger required;
  NSUInteger off;
};

constexpr Modifiers kCommandOnly{kTsCommand, kTsOption | kTsControl};
constexpr Modifiers kCommandOption{kTsCommand | kTsOption, kTsControl};
constexpr Modifiers kCommandControl{kTsCommand | kTsControl, kTsOption};
constexpr Modifiers kCommandShift{kTsCommand | kTsShift, kTsOption | kTsControl};

bool Holds(NSEvent* event, Modifiers modifiers) {
  return ([event modifierFlags] & (modifiers.required | modifiers.off)) == modifiers.required;
}

bool HasCharacters(NSEvent* event, NSString* characters) {
  return [[event ts_charactersIgnoringModifiers] isEqualToString:characters];
}

bool HasKeyCode(NSEvent* event, unsigned short keyCode) {
  return [event ts_isKeyboardEvent] && [event ts_virtualKeyCode] == keyCode;
}

NSString* const kDispatch = @"TsDispatchNotificationName";
NSString* const kPasteFiles = @"TsPasteFilesIntoCurrentWebContents";
NSString* const kPreviousTab = @"window/set-previous-tab-active";
NSString* const kNextTab = @"window/set-next-tab-active";
NSString* const kFileURLType = @"public.file-url";

// The same encoding for both methods, although one returns a truth value.
constexpr char kEncoding[] = "V@:@";

// The latest dispatched key press with Command or Control, until the next search of the main menu: web contents return
// unused shortcuts as synthetic events, without modifiers and key code.
class LastKeyDown {
 public:
  void Remember(NSEvent* event) { event_ = Retain(event); }

  // The remembered event if `event` repeats it, else `event` itself. Forgets the remembered event.
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
  static Forever<LastKeyDown> event;
  return *event;
}

bool ConsumeForTab(NSString* action) {
  TsPost(kDispatch, NSApp, @{@"action" : action});
  return true;
}

// With Shift, brackets are typed as braces.
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
  // performSelector: would take the truth value for an object.
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

void ReportModifiers(NSUInteger flags) {
  const auto holds = [flags](NSUInteger modifier) { return (flags & modifier) != 0; };
  TsCallback(TsSlot::KeyboardModifierKeys)
      .Call({holds(kTsFunction), holds(kTsControl), holds(kTsOption), holds(kTsCommand), holds(kTsShift),
             holds(kTsCapsLock), holds(kTsHelp), holds(kTsNumericPad)});
}

// While another application is active no events arrive, so read the modifiers from the keyboard.
void ReportModifiersWhenActive() {
  TsObserveOnMainQueue(NSApplicationDidBecomeActiveNotification, [](NSNotification*) {
    if ([NSApp currentEvent] != nil) ReportModifiers([NSEvent modifierFlags]);
  });
}

}  // namespace

bool IsCommandKeyPressed(NSEvent* event) { return Holds(event, kCommandOnly); }

bool IsCommandOptionKeyPressed(NSEvent* event) { return Holds(event, kCommandOption); }

bool IsCommandControlKeyPressed(NSEvent* event) { return Holds(event, kCommandControl); }

bool IsCommandShiftKeyPressed(NSEvent* event) { return Holds(event, kCommandShift); }

bool IsCommandAndStringKey(NSEvent* event, NSString* characters) {
  return IsCommandKeyPressed(event) && HasCharacters(event, characters);
}

bool IsCommandShiftAndStringKey(NSEvent* event, NSString* characters) {
  return IsCommandShiftKeyPressed(event) && HasCharacters(event, characters);
}

bool IsCommandAndKeyCodeKey(NSEvent* event, unsigned short keyCode) {
  return IsCommandKeyPressed(event) && HasKeyCode(event, keyCode);
}

bool IsCommandOptionAndKeyCodeKey(NSEvent* event, unsigned short keyCode) {
  return IsCommandOptionKeyPressed(event) && HasKeyCode(event, keyCode);
}

bool IsCommandControlAndKeyCodeKey(NSEvent* event, unsigned short keyCode) {
  return IsCommandControlKeyPressed(event) && HasKeyCode(event, keyCode);
}

bool IsCommandShiftAndKeyCodeKey(NSEvent* event, unsigned short keyCode) {
  return IsCommandShiftKeyPressed(event) && HasKeyCode(event, keyCode);
}

bool IsEventForKeyEquivalent(NSEvent* event) {
  return [event type] == kTsKeyDown && [event ts_holdsModifier:kTsCommand | kTsControl];
}

bool TsIsSpecialEvent(NSEvent* event) {
  if ([event type] != kTsKeyDown || ![event ts_holdsModifier:kTsCommand]) return false;
  return IsCommandAndKeyCodeKey(event, kTsKeyComma) || IsCommandAndKeyCodeKey(event, kTsKeyLeftArrow) ||
         IsCommandAndKeyCodeKey(event, kTsKeyRightArrow) || IsCommandAndKeyCodeKey(event, kTsKeyDownArrow) ||
         IsCommandAndKeyCodeKey(event, kTsKeyUpArrow) || IsCommandOptionAndKeyCodeKey(event, kTsKeyDownArrow) ||
         IsCommandOptionAndKeyCodeKey(event, kTsKeyUpArrow) || IsCommandControlAndKeyCodeKey(event, kTsKeySpace) ||
         IsCommandShiftAndStringKey(event, @"D") || IsCommandShiftAndKeyCodeKey(event, kTsKeyD) ||
         IsCommandControlAndKeyCodeKey(event, kTsKeyLeftArrow) ||
         IsCommandControlAndKeyCodeKey(event, kTsKeyRightArrow) ||
         IsCommandOptionAndKeyCodeKey(event, kTsKeyLeftArrow) || IsCommandOptionAndKeyCodeKey(event, kTsKeyRightArrow);
}

@interface NSObject (TsPreviousMethods)
- (void)tsOrigSendEvent:(NSEvent*)event;
@end

void TsInstallApplicationPatch() {
  if (Class application = [NSApp class]) {
    PatchApplication(application);
  } else {
    TsLogError(@"Cannot patch as I didn't find application class");
  }
  if (tessaro::platform::IsWindowServerAvailable()) tessaro::platform::CompleteAppKit();
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
  // Dispatching may release the last reference to the event.
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
  if (![event ts_hasNoLocation]) ReportModifiers([event ts_settledModifierFlags]);
}

NSEvent* TsHandleKeyboardEvent(id, SEL, NSEvent* event) { return event; }

bool TsPasteIfPossible(id, SEL) {
  if (!hasFilesInPasteboard(kFileURLType)) return false;
  TsPost(kPasteFiles);
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
