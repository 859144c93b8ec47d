#import <AppKit/AppKit.h>

#include "Platform/Linux/AppKit/Completion.h"
#include "Platform/Linux/AppKit/NSMenu+Completion.h"
#include "Platform/Linux/AppKit/NSMenuItem+Completion.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"

namespace tessaro::platform {

namespace {

ReplacedMethod<void (*)(NSMenuView*, SEL, NSInteger)> attachSubmenu;
ReplacedMethod<CGFloat (*)(NSMenuView*, SEL, NSInteger)> heightForItem;
ReplacedMethod<NSRect (*)(NSMenuView*, SEL, NSInteger)> rectOfItem;
ReplacedMethod<void (*)(NSMenuView*, SEL, NSNotification*)> redrawChangedItem;

void AttachSubmenu(NSMenuView* view, SEL selector, NSInteger index) {
  if (index >= 0) MenuWillOpen([[[view menu] itemAtIndex:index] submenu]);
  attachSubmenu(view, selector, index);
}

bool IsHidden(NSMenuView* view, NSInteger index) {
  NSMenu* menu = [view menu];
  return index >= 0 && index < [menu numberOfItems] && [static_cast<NSMenuItem*>([menu itemAtIndex:index]) isHidden];
}

CGFloat HeightForItem(NSMenuView* view, SEL selector, NSInteger index) {
  return IsHidden(view, index) ? 0 : heightForItem(view, selector, index);
}

// In a menu bar, items move left over the hidden items before them. In a column, hidden items have no height.
NSRect RectOfItem(NSMenuView* view, SEL selector, NSInteger index) {
  NSRect rect = rectOfItem(view, selector, index);
  if (![view isHorizontal]) return rect;
  if (IsHidden(view, index)) return NSZeroRect;
  for (NSInteger before = 0; before < index; ++before) {
    if (IsHidden(view, before)) rect.origin.x -= rectOfItem(view, selector, before).size.width;
  }
  return rect;
}

// GNUstep measures the whole menu at each change and redraws only the changed item, although others may have to move.
void RedrawChangedItem(NSMenuView* view, SEL, NSNotification* notification) {
  const NSInteger index = [[[notification userInfo] objectForKey:@"NSMenuItemIndex"] integerValue];
  NSMenuItemCell* cell = [view menuItemCellForItemAtIndex:index];
  [cell setEnabled:[[cell menuItem] isEnabled]];
  [cell setNeedsSizing:YES];
  [view setNeedsSizing:YES];
  [view setNeedsDisplay:YES];
}

}  // namespace

void CompleteMenuViews() {
  attachSubmenu.With([NSMenuView class], "attachSubmenuForItemAtIndex:", AttachSubmenu);
  heightForItem.With([NSMenuView class], "heightForItem:", HeightForItem);
  rectOfItem.With([NSMenuView class], "rectOfItemAtIndex:", RectOfItem);
  redrawChangedItem.With([NSMenuView class], "itemChanged:", RedrawChangedItem);
}

}  // namespace tessaro::platform
