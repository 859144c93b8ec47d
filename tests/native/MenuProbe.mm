#import <AppKit/AppKit.h>

#include "Application/AtomApplication.h"
#include "Application/KeyCombinations.h"
#include "Base/Ref.h"
#include "Base/TsReplaceMethod.h"
#import "Extensions/NSEvent+TsKeyboard.h"
#include "Menu/TsMainMenu.h"
#include "Platform/Cocoa.h"
#include "Platform/KeyboardLayout.h"
#include "Platform/Linux/Keyboard/ShortcutText.h"
#include "Probe.h"

namespace {

Ref<NSMenu> MakeMenu(NSString* title, NSArray* items) {
  auto menu = Adopt([[NSMenu alloc] initWithTitle:title]);
  [menu setMenuChangedMessagesEnabled:NO];
  for (NSDictionary* description in items) {
    NSString* key = [description objectForKey:@"key"];
    auto item = Adopt([[NSMenuItem alloc] initWithTitle:[description objectForKey:@"title"]
                                                 action:@selector(performCommand:)
                                          keyEquivalent:key != nil ? key : @""]);
    [item setKeyEquivalentModifierMask:[[description objectForKey:@"modifiers"] unsignedIntegerValue]];
    if (id commandId = [description objectForKey:@"commandId"]) [item setRepresentedObject:@{@"commandId" : commandId}];
    [menu addItem:item];
    if (id nested = [description objectForKey:@"items"]) {
      [menu setSubmenu:MakeMenu([description objectForKey:@"title"], nested) forItem:item];
    }
  }
  [menu setMenuChangedMessagesEnabled:YES];
  return menu;
}

NSArray* Describe(NSMenu* menu) {
  NSMutableArray* items = [NSMutableArray array];
  for (NSMenuItem* item in [menu itemArray]) {
    NSMutableDictionary* description = [NSMutableDictionary dictionary];
    [description setObject:[item title] forKey:@"title"];
    [description setObject:[item keyEquivalent] forKey:@"key"];
    [description setObject:@(static_cast<NSInteger>([item keyEquivalentModifierMask])) forKey:@"modifiers"];
    [description setObject:Truth([item isHidden]) forKey:@"hidden"];
    if ([item hasSubmenu]) {
      [description setObject:[[item submenu] title] forKey:@"submenuTitle"];
      [description setObject:Describe([item submenu]) forKey:@"items"];
    }
    [items addObject:description];
  }
  return items;
}

void setMainMenu(NSArray* items) { [NSApp setMainMenu:MakeMenu(@"TessaroHost", items)]; }

id shortcutTexts() {
  NSMutableArray* texts = [NSMutableArray array];
  for (NSMenuItem* item in [[[[[NSApp mainMenu] itemArray] objectAtIndex:0] submenu] itemArray]) {
    [texts addObject:tessaro::platform::ShortcutText(item)];
  }
  return texts;
}

id mainMenu() { return Describe([NSApp mainMenu]); }

// ---- Keys

NSEvent* EventOf(NSDictionary* description) {
  const auto number = [&](NSString* key) { return [[description objectForKey:key] unsignedIntegerValue]; };
  const NSPoint location = NSMakePoint(static_cast<CGFloat>(number(@"x")), 1);
  const NSEventType type = static_cast<NSEventType>(number(@"type"));
  if (type == NSLeftMouseDown) {
    return [NSEvent mouseEventWithType:type
                              location:location
                         modifierFlags:number(@"modifiers")
                             timestamp:0
                          windowNumber:0
                               context:nil
                           eventNumber:0
                            clickCount:1
                              pressure:0];
  }
  return [NSEvent keyEventWithType:type
                          location:[[description objectForKey:@"isSynthetic"] boolValue] ? NSZeroPoint : location
                     modifierFlags:number(@"modifiers")
                         timestamp:0
                      windowNumber:0
                           context:nil
                        characters:[description objectForKey:@"characters"]
       charactersIgnoringModifiers:[description objectForKey:@"ignoring"]
                         isARepeat:NO
                           keyCode:static_cast<unsigned short>(number(@"keyCode"))];
}

bool isSpecial(NSDictionary* description) { return TsIsSpecialEvent(EventOf(description)); }

void sendEvent(NSDictionary* description) { [NSApp sendEvent:EventOf(description)]; }

bool performKeyEquivalent(NSDictionary* description) {
  return [[NSApp mainMenu] performKeyEquivalent:EventOf(description)] != NO;
}

bool processKey(NSDictionary* description) { return ProcessKeyboardEvent(EventOf(description)); }

void processModifiers(NSDictionary* description) { ProcessKeyboardModifierKeysEvent(EventOf(description)); }

id menuEventDescription(NSDictionary* description) {
  return TsMenuEventDescription(description == nil ? nil : EventOf(description));
}

int virtualKeyCode(unsigned short systemKeyCode) { return tessaro::platform::VirtualKeyCode(systemKeyCode); }

// ---- The patch

NSInteger ReturnSeven(id, SEL) { return 7; }

// Replaces a method of a class by one that returns 7. Returns false if the class has no such method.
bool replaceMethod(NSString* className, NSString* selector, NSString* alias) {
  return TsReplaceMethod(NSClassFromString(className), NSSelectorFromString(selector), NSSelectorFromString(alias),
                         reinterpret_cast<IMP>(ReturnSeven)) != nullptr;
}

// ---- Pasting

bool hasFiles(NSString* type) { return hasFilesInPasteboard(type); }

double titleWidth(NSString* title) {
  return [title sizeWithAttributes:@{NSFontAttributeName : [NSFont menuBarFontOfSize:0]}].width;
}

// ---- Costs

void measureSendEvent(NSDictionary* description, int count) {
  NSEvent* event = EventOf(description);
  for (int i = 0; i < count; ++i) TsSendEvent(NSApp, @selector(sendEvent:), event);
}

void measurePreviousSendEvent(NSDictionary* description, int count) {
  NSEvent* event = EventOf(description);
  for (int i = 0; i < count; ++i) [NSApp performSelector:@selector(tsOrigSendEvent:) withObject:event];
}

PROBES("menus", titleWidth, setMainMenu, mainMenu, shortcutTexts, isSpecial, sendEvent, performKeyEquivalent,
       processKey, processModifiers, menuEventDescription, virtualKeyCode, replaceMethod, hasFiles, measureSendEvent,
       measurePreviousSendEvent);

}  // namespace
