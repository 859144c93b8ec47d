#include "Platform/Menus.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Base/Ref.h"
#include "Base/TsReplaceMethod.h"
#include "Platform/Linux/AppKit/NSMenuItem+Hidden.h"
#include "Platform/Linux/Keyboard/KeyEquivalents.h"
#include "Platform/Linux/Keyboard/ShortcutText.h"

namespace tessaro::platform {

namespace {

// A method of GNUstep's that ours stands in for, under our name for it.
template <typename Function>
class Replaced {
 public:
  void With(Class patched, const char* selector, Function replacement) {
    const std::string alias = std::string("ts_gnustep_") + selector;
    previous_ = reinterpret_cast<Function>(TsReplaceMethod(
        patched, sel_registerName(selector), sel_registerName(alias.c_str()), reinterpret_cast<IMP>(replacement)));
  }

  template <typename... Arguments>
  auto operator()(Arguments... arguments) const {
    return previous_(arguments...);
  }

 private:
  Function previous_ = nullptr;
};

// ---- Opening and closing

// Which menus are on the screen because somebody has opened them.
class OpenMenus {
 public:
  void WillOpen(NSMenu* menu) {
    if (menu == nil || Find(menu) != menus_.end()) return;
    menus_.push_back(Retain(menu));
    if ([[menu delegate] respondsToSelector:@selector(menuWillOpen:)]) [[menu delegate] menuWillOpen:menu];
  }

  void DidClose(NSMenu* menu) {
    const auto position = Find(menu);
    if (position == menus_.end()) return;
    const Ref<NSMenu> closed = *position;
    menus_.erase(position);
    if ([[menu delegate] respondsToSelector:@selector(menuDidClose:)]) [[menu delegate] menuDidClose:menu];
  }

 private:
  std::vector<Ref<NSMenu>>::iterator Find(NSMenu* menu) {
    return std::find_if(menus_.begin(), menus_.end(), [menu](const auto& open) { return open.get() == menu; });
  }

  std::vector<Ref<NSMenu>> menus_;
};

OpenMenus& Open() {
  [[clang::no_destroy]] static OpenMenus menus;
  return menus;
}

Replaced<void (*)(NSMenuView*, SEL, NSInteger)> attachSubmenu;
Replaced<void (*)(NSMenu*, SEL)> displayTransient;
Replaced<void (*)(NSMenu*, SEL)> close;
Replaced<void (*)(NSMenu*, SEL)> closeTransient;

void AttachSubmenu(NSMenuView* view, SEL selector, NSInteger index) {
  if (index >= 0) Open().WillOpen([[[view menu] itemAtIndex:index] submenu]);
  attachSubmenu(view, selector, index);
}

void DisplayTransient(NSMenu* menu, SEL selector) {
  Open().WillOpen(menu);
  displayTransient(menu, selector);
}

void Close(NSMenu* menu, SEL selector) {
  close(menu, selector);
  Open().DidClose(menu);
}

void CloseTransient(NSMenu* menu, SEL selector) {
  closeTransient(menu, selector);
  Open().DidClose(menu);
}

// ---- Hidden items

Replaced<CGFloat (*)(NSMenuView*, SEL, NSInteger)> heightForItem;
Replaced<NSRect (*)(NSMenuView*, SEL, NSInteger)> rectOfItem;

bool IsHidden(NSMenuView* view, NSInteger index) {
  NSMenu* menu = [view menu];
  return index >= 0 && index < [menu numberOfItems] && [static_cast<NSMenuItem*>([menu itemAtIndex:index]) isHidden];
}

CGFloat HeightForItem(NSMenuView* view, SEL selector, NSInteger index) {
  return IsHidden(view, index) ? 0 : heightForItem(view, selector, index);
}

// In a menu bar the items behind a hidden one close up to it; in a column their height does it.
NSRect RectOfItem(NSMenuView* view, SEL selector, NSInteger index) {
  NSRect rect = rectOfItem(view, selector, index);
  if (![view isHorizontal]) return rect;
  if (IsHidden(view, index)) return NSZeroRect;
  for (NSInteger before = 0; before < index; ++before) {
    if (IsHidden(view, before)) rect.origin.x -= rectOfItem(view, selector, before).size.width;
  }
  return rect;
}

// GNUstep draws the changed item anew, where its neighbours may have to move, and measures the whole menu for it at
// once.
void RedrawChangedItem(NSMenuView* view, SEL, NSNotification* notification) {
  const NSInteger index = [[[notification userInfo] objectForKey:@"NSMenuItemIndex"] integerValue];
  NSMenuItemCell* cell = [view menuItemCellForItemAtIndex:index];
  [cell setEnabled:[[cell menuItem] isEnabled]];
  [cell setNeedsSizing:YES];
  [view setNeedsSizing:YES];
  [view setNeedsDisplay:YES];
}

Replaced<void (*)(NSMenuView*, SEL, NSNotification*)> redrawChangedItem;
Replaced<void (*)(NSMenu*, SEL, NSMenuItem*)> itemChanged;

// GNUstep asks all items of the menu whether they are enabled each time that one of them changes, and once more when
// the menu opens. While its messages are off it doesn't.
void ItemChanged(NSMenu* menu, SEL selector, NSMenuItem* item) {
  const BOOL tellsChanges = [menu menuChangedMessagesEnabled];
  [menu setMenuChangedMessagesEnabled:NO];
  itemChanged(menu, selector, item);
  [menu setMenuChangedMessagesEnabled:tellsChanges];
  if ([[menu window] isVisible]) [menu update];
}

// ---- Key equivalents

// Whether an item is enabled is known only when its menu has just been updated.
bool Perform(NSMenu* menu, NSInteger index) {
  [menu update];
  if (![[menu itemAtIndex:index] isEnabled]) return false;
  // Not performActionWithHighlightingForItemAtIndex:, which keeps the application from work for a tenth of a second.
  [menu performActionForItemAtIndex:index];
  return true;
}

bool PerformKeyEquivalent(NSMenu* menu, NSEvent* event, const KeyPress& press) {
  NSArray* items = [NSArray arrayWithArray:[menu itemArray]];
  for (NSMenuItem* item in items) {
    if ([item isHidden]) continue;
    NSMenu* submenu = [item submenu];
    if (submenu != nil) {
      if (submenu != [NSApp servicesMenu] && [submenu performKeyEquivalent:event]) return true;
    } else if (press.Chooses(item) && Perform(menu, [menu indexOfItem:item])) {
      return true;
    }
  }
  return false;
}

BOOL MenuPerformKeyEquivalent(NSMenu* menu, SEL, NSEvent* event) {
  if ([event type] != NSKeyDown || [[event charactersIgnoringModifiers] length] == 0) return NO;
  return PerformKeyEquivalent(menu, event, KeyPress(event));
}

Replaced<BOOL (*)(NSMenu*, SEL, NSEvent*)> performKeyEquivalent;

Replaced<NSString* (*)(NSMenuItemCell*, SEL)> keyEquivalentString;

NSString* KeyEquivalentString(NSMenuItemCell* cell, SEL) { return ShortcutText([cell menuItem]); }

// Menus that were made before know no better.
void MeasureAgain(NSMenu* menu) {
  for (NSMenuItem* item in [menu itemArray]) {
    [menu itemChanged:item];
    MeasureAgain([item submenu]);
  }
}

void Complete() {
  attachSubmenu.With([NSMenuView class], "attachSubmenuForItemAtIndex:", AttachSubmenu);
  displayTransient.With([NSMenu class], "displayTransient", DisplayTransient);
  close.With([NSMenu class], "close", Close);
  closeTransient.With([NSMenu class], "closeTransient", CloseTransient);
  heightForItem.With([NSMenuView class], "heightForItem:", HeightForItem);
  rectOfItem.With([NSMenuView class], "rectOfItemAtIndex:", RectOfItem);
  redrawChangedItem.With([NSMenuView class], "itemChanged:", RedrawChangedItem);
  itemChanged.With([NSMenu class], "itemChanged:", ItemChanged);
  keyEquivalentString.With([NSMenuItemCell class], "_keyEquivalentString", KeyEquivalentString);
  performKeyEquivalent.With([NSMenu class], "performKeyEquivalent:", MenuPerformKeyEquivalent);
  MeasureAgain([NSApp mainMenu]);
}

}  // namespace

void CompleteMenus() {
  static const bool isComplete = (Complete(), true);
  static_cast<void>(isComplete);
}

}  // namespace tessaro::platform
