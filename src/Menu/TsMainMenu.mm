#include "Menu/TsMainMenu.h"

#import <AppKit/AppKit.h>

#include <cmath>
#include <limits>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#import "Extensions/NSEvent+TsKeyboard.h"
#include "Platform/Cocoa.h"
#include "Utilities/TsNotificationObserver.h"

NSString* const TsAppMenuWillOpenNotificationName = @"TsAppMenuWillOpen";

namespace {

NSString* const kMenuDidClose = @"TsAppMenuDidClose";
NSString* const kCommandId = @"commandId";

// JSON's booleans are numbers too, of a class of their own.
bool IsNumber(id value) {
  static const Class boolean = [[NSNumber numberWithBool:YES] class];
  return As<NSNumber>(value) != nil && ![value isKindOfClass:boolean];
}

// ---- Attributes

struct ModifierName {
  NSString* name;
  NSUInteger flag;
};

const ModifierName kModifierNames[] = {
    {@"Cmd", kTsCommand}, {@"Ctrl", kTsControl}, {@"Opt", kTsOption}, {@"Shift", kTsShift}};

NSUInteger ModifiersIn(NSArray* parts) {
  NSUInteger modifiers = 0;
  for (const auto& [name, flag] : kModifierNames) {
    if ([parts containsObject:name]) modifiers |= flag;
  }
  return modifiers;
}

bool SetTitle(NSMenuItem* item, id title) {
  if (As<NSString>(title) == nil) return false;
  [item setTitle:title];
  if ([item hasSubmenu]) [[item submenu] setTitle:[item title]];
  return true;
}

bool SetVisible(NSMenuItem* item, id visible) {
  if (As<NSNumber>(visible) == nil) return false;
  [item setHidden:![visible boolValue]];
  return true;
}

bool SetAccelerator(NSMenuItem* item, id accelerator) {
  const bool isNone = accelerator == [NSNull null];
  if (!isNone && As<NSString>(accelerator) == nil) return false;
  NSArray* parts = isNone ? [NSArray array] : [accelerator componentsSeparatedByString:@"+"];
  NSString* key = [parts count] == 0 ? @"" : [parts lastObject];
  [item setKeyEquivalent:key];
  [item setKeyEquivalentModifierMask:[key length] == 0 ? 0 : ModifiersIn(parts)];
  return true;
}

struct Attribute {
  NSString* key;
  bool (*set)(NSMenuItem* item, id value);
};

const Attribute kAttributes[] = {{@"title", SetTitle}, {@"visible", SetVisible}, {@"accelerator", SetAccelerator}};

bool SetAttribute(NSMenuItem* item, NSString* name, id value) {
  for (const auto& [key, set] : kAttributes) {
    if ([key isEqualToString:name]) return set(item, value);
  }
  return false;
}

void TsUpdateMenuItem(NSMenuItem* item, NSDictionary* attributes) {
  for (NSString* name in attributes) {
    id value = [attributes objectForKey:name];
    if (SetAttribute(item, name, value)) continue;
    TsLogError(@"%@ Cannot set menuItems item attribute %@ to %@", item, name, value);
  }
}

// ---- Items by command

void TsBuildCommandIdDictionary(NSMutableDictionary* map, NSArray* items) {
  for (NSMenuItem* item in items) {
    id commandId = [As<NSDictionary>([item representedObject]) objectForKey:kCommandId];
    if (commandId != nil) [map setObject:item forKey:commandId];
    TsBuildCommandIdDictionary(map, [[item submenu] itemArray]);
  }
}

NSMutableDictionary* TsGetMenuItemMap() {
  static Forever<Ref<NSMutableDictionary>> map([] {
    auto built = Adopt([[NSMutableDictionary alloc] init]);
    TsBuildCommandIdDictionary(built, [[NSApp mainMenu] itemArray]);
    return built;
  }());
  return *map;
}

// ---- Items by path

// Numbers that are no index give one beyond all items.
NSUInteger IndexOf(NSNumber* number) {
  constexpr auto kBeyond = std::numeric_limits<NSUInteger>::max();
  const double value = std::trunc([number doubleValue]);
  if (!(value >= 0)) return static_cast<NSUInteger>([number longLongValue]);
  return value < static_cast<double>(kBeyond) ? static_cast<NSUInteger>(value) : kBeyond;
}

NSUInteger IndexOfTitle(NSArray* items, NSString* title) {
  NSUInteger index = 0;
  for (NSMenuItem* item in items) {
    if ([[item title] isEqualToString:title]) return index;
    ++index;
  }
  return NSNotFound;
}

// A walk along a path: the items to choose from, and the item chosen last.
class Walk {
 public:
  explicit Walk(NSArray* items) : level_(items) {}

  [[nodiscard]] NSMenuItem* item() const { return item_; }

  bool Take(id element, NSArray* path) {
    if (level_ == nil) {
      TsLogError(@"Path element %@ isn't valid as it points to a menuItems item without submenu (%@).", element, path);
      return false;
    }
    if (IsNumber(element)) return Choose(IndexOf(element));
    if (As<NSString>(element) != nil) return SkipTo(element);
    TsLogError(@"[ERROR] Unknown navigation item %@ in %@", element, path);
    return false;
  }

 private:
  bool Choose(NSUInteger index) {
    if (index >= [level_ count]) {
      TsLogError(@"Index out of range %lu for items %@", static_cast<unsigned long>(index), level_);
      return false;
    }
    item_ = [level_ objectAtIndex:index];
    level_ = [[item_ submenu] itemArray];
    return true;
  }

  bool SkipTo(NSString* title) {
    const NSUInteger index = IndexOfTitle(level_, title);
    if (index == NSNotFound) {
      TsLogError(@"Didn't find marker item with name %@", title);
      return false;
    }
    level_ = [level_ subarrayWithRange:NSMakeRange(index, [level_ count] - index)];
    return true;
  }

  NSArray* level_;
  NSMenuItem* item_ = nil;
};

// A menu that has the shared delegate now. Its previous delegate is not retained, as menus
// do not retain their delegates.
struct DelegatedMenu {
  Ref<NSMenu> menu;
  id previous;
};

std::vector<DelegatedMenu>& DelegatedMenus() {
  static Forever<std::vector<DelegatedMenu>> menus;
  return *menus;
}

id PreviousDelegate(NSMenu* menu) {
  for (const DelegatedMenu& each : DelegatedMenus()) {
    if (each.menu.get() == menu) return each.previous;
  }
  return nil;
}

// The previous delegate of some menu that answers to the selector.
id AnyDelegateFor(SEL selector) {
  for (const DelegatedMenu& each : DelegatedMenus()) {
    if ([each.previous respondsToSelector:selector]) return each.previous;
  }
  return nil;
}

void BecomeDelegateOf(NSMenu* menu) {
  id shared = [TsAppMenuDelegate sharedDelegate];
  if ([menu delegate] == shared) return;
  DelegatedMenus().push_back({Retain(menu), [menu delegate]});
  [menu setDelegate:shared];
}

void ReturnDelegatesExceptOf(NSArray* menus) {
  id shared = [TsAppMenuDelegate sharedDelegate];
  std::erase_if(DelegatedMenus(), [menus, shared](const DelegatedMenu& each) {
    const bool isOurs = [each.menu delegate] == shared;
    if (isOurs && [menus indexOfObjectIdenticalTo:each.menu] != NSNotFound) return false;
    if (isOurs) [each.menu setDelegate:each.previous];
    return true;
  });
}

}  // namespace

bool TsMainMenuUpdateMenuItemWithCommandId(NSNumber* commandId, NSDictionary* attributes) {
  NSMenuItem* item = [TsGetMenuItemMap() objectForKey:commandId];
  if (item == nil) return false;
  TsUpdateMenuItem(item, attributes);
  return true;
}

bool TsMainMenuUpdateMenuItem(NSArray* path, NSDictionary* attributes) {
  Walk walk([[NSApp mainMenu] itemArray]);
  for (id element in path) {
    if (!walk.Take(element, path)) return false;
  }
  if (walk.item() == nil) {
    TsLogError(@"No menuItems item found");
    return false;
  }
  TsUpdateMenuItem(walk.item(), attributes);
  return true;
}

NSDictionary* TsMenuEventDescription(NSEvent* event) {
  if (event == nil) return [NSDictionary dictionary];
  NSMutableDictionary* description = [event ts_modifierDescription];
  NSString* characters =
      [event ts_holdsModifier:kTsCommand] ? [event ts_characters] : [event ts_charactersIgnoringModifiers];
  [description setObject:[NSNumber numberWithUnsignedShort:[event ts_virtualKeyCode]] forKey:@"key-code"];
  [description setObject:TsOrEmpty(characters) forKey:@"chars"];
  return description;
}

void TsPostAppNeedsUpdateNotification(NSMenu* menu, NSEvent* event) {
  NSString* title = [menu title];
  NSDictionary* info = [NSDictionary dictionaryWithObjectsAndKeys:TsMenuEventDescription(event), @"event",  //
                                                                  TsOrEmpty(title), @"menu", nil];
  TsPost(TsAppMenuWillOpenNotificationName, menu, info);
}

void TsSetupAppMenuNeedsUpdateNotification() {
  NSMenu* mainMenu = [NSApp mainMenu];
  if (mainMenu == nil) return;
  NSMutableArray* menus = [NSMutableArray arrayWithObject:mainMenu];
  for (NSMenuItem* item in [mainMenu itemArray]) {
    if ([item submenu] != nil) [menus addObject:[item submenu]];
  }
  ReturnDelegatesExceptOf(menus);
  for (NSMenu* menu in menus) BecomeDelegateOf(menu);
}

@implementation TsAppMenuDelegate

+ (id)sharedDelegate {
  static Forever<Ref<TsAppMenuDelegate>> delegate(Adopt([[self alloc] init]));
  return *delegate;
}

- (BOOL)respondsToSelector:(SEL)selector {
  return [super respondsToSelector:selector] || AnyDelegateFor(selector) != nil;
}

- (NSMethodSignature*)methodSignatureForSelector:(SEL)selector {
  NSMethodSignature* signature = [super methodSignatureForSelector:selector];
  return signature != nil ? signature : [AnyDelegateFor(selector) methodSignatureForSelector:selector];
}

// Every message to a menu's delegate names the menu first. A menu whose own delegate doesn't answer gets zero.
- (void)forwardInvocation:(NSInvocation*)invocation {
  NSMenu* menu = nil;
  [invocation getArgument:&menu atIndex:2];
  id previous = PreviousDelegate(menu);
  if ([previous respondsToSelector:[invocation selector]]) [invocation invokeWithTarget:previous];
}

- (void)menuWillOpen:(NSMenu*)menu {
  TsPostAppNeedsUpdateNotification(menu, nil);
  id previous = PreviousDelegate(menu);
  if ([previous respondsToSelector:@selector(menuWillOpen:)]) [previous menuWillOpen:menu];
}

- (void)menuDidClose:(NSMenu*)menu {
  TsPost(kMenuDidClose, menu, @{});
  id previous = PreviousDelegate(menu);
  if ([previous respondsToSelector:@selector(menuDidClose:)]) [previous menuDidClose:menu];
}

@end
