#import <AppKit/AppKit.h>

#include "Application/AtomApplication.h"
#include "Application/KeyCombinations.h"
#include "Base/Ref.h"
#include "Base/TsReplaceMethod.h"
#import "Extensions/NSEvent+TsKeyboard.h"
#include "Menu/TsMainMenu.h"
#include "Platform/Cocoa.h"
#include "Platform/Linux/Keyboard/KeyEquivalents.h"
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

void setMainMenu(NSArray* items) { [NSApp setMainMenu:MakeMenu(@"TessaroHost", items)]; }

id shortcutTexts() {
  NSMutableArray* texts = [NSMutableArray array];
  for (NSMenuItem* item in [[[[[NSApp mainMenu] itemArray] objectAtIndex:0] submenu] itemArray]) {
    [texts addObject:tessaro::platform::ShortcutText(item)];
  }
  return texts;
}

// ---- Keys

bool processKey(NSEvent* event) { return ProcessKeyboardEvent(event); }

void processModifiers(NSEvent* event) { ProcessKeyboardModifierKeysEvent(event); }

id menuEventDescription(NSEvent* event) { return TsMenuEventDescription(event); }

// ---- The patch

NSInteger ReturnSeven(id, SEL) { return 7; }

// Replaces a method of a class by one that returns 7. Returns false if the class has no such method.
bool replaceMethod(NSString* className, NSString* selector, NSString* alias) {
  return TsReplaceMethod(NSClassFromString(className), NSSelectorFromString(selector), NSSelectorFromString(alias),
                         reinterpret_cast<IMP>(ReturnSeven)) != nullptr;
}

// ---- Pasting

bool hasFiles(NSString* type) { return hasFilesInPasteboard(type); }

PROBES("menus", setMainMenu, shortcutTexts, processKey, processModifiers, menuEventDescription, replaceMethod,
       hasFiles);

}  // namespace
