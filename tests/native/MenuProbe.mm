#import <AppKit/AppKit.h>

#include "Application/AtomApplication.h"
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
  for (NSDictionary* each in items) {
    NSString* name = [each objectForKey:@"title"];
    NSString* key = [each objectForKey:@"key"];
    id item = [menu addItemWithTitle:name action:@selector(performCommand:) keyEquivalent:key != nil ? key : @""];
    [item setKeyEquivalentModifierMask:[[each objectForKey:@"modifiers"] unsignedIntegerValue]];
    if (id commandId = [each objectForKey:@"commandId"]) [item setRepresentedObject:@{@"commandId" : commandId}];
    if (id nested = [each objectForKey:@"items"]) [menu setSubmenu:MakeMenu(name, nested) forItem:item];
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

bool processKey(NSEvent* event) { return ProcessKeyboardEvent(event); }

void processModifiers(NSEvent* event) { ProcessKeyboardModifierKeysEvent(event); }

id menuEventDescription(NSEvent* event) { return TsMenuEventDescription(event); }

NSInteger ReturnSeven(id, SEL) { return 7; }

// Replaces a method of a class by one that returns 7. Returns false if the class has no such method.
bool replaceMethod(NSString* className, NSString* selector, NSString* alias) {
  return TsReplaceMethod(NSClassFromString(className), NSSelectorFromString(selector), NSSelectorFromString(alias),
                         reinterpret_cast<IMP>(ReturnSeven)) != nullptr;
}

bool hasFiles(NSString* type) { return hasFilesInPasteboard(type); }

PROBES("menus", setMainMenu, shortcutTexts, processKey, processModifiers, menuEventDescription, replaceMethod,
       hasFiles);

}  // namespace
