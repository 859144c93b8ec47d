#import "Platform/Linux/AppKit/CocoaAdditions.h"

#include <algorithm>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Platform/Linux/AppKit/Completion.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"
#include "Platform/Linux/AppKit/SideTable.h"
#include "Platform/Linux/Keyboard/KeyEquivalents.h"

namespace {

// Keeps a menu that fits on the screen entirely on the screen.
NSPoint OriginOnScreen(NSPoint corner, NSSize size, NSRect screen) {
  return {std::max(std::min(corner.x, NSMaxX(screen) - size.width), NSMinX(screen)),
          std::max(std::min(corner.y, NSMaxY(screen)) - size.height, NSMinY(screen))};
}

NSEvent* MouseEvent(NSEventType type, NSPoint location, NSWindow* window) {
  return [NSEvent mouseEventWithType:type
                            location:location
                       modifierFlags:0
                           timestamp:[NSDate timeIntervalSinceReferenceDate]
                        windowNumber:[window windowNumber]
                             context:nil
                         eventNumber:0
                          clickCount:1
                            pressure:1];
}

struct Properties {
  bool isHidden = false;
  Ref<NSAttributedString> title;
};

using ItemProperties = tessaro::platform::SideTable<NSMenuItem, Properties>;

}  // namespace

@implementation NSMenu (Completion)

// From the end, so that nothing has to move up. GNUstep leaves a notification behind for each item.
- (void)removeAllItems {
  for (NSInteger index = [self numberOfItems]; index > 0; --index) {
    @autoreleasepool {
      [self removeItemAtIndex:index - 1];
    }
  }
}

- (BOOL)popUpMenuPositioningItem:(NSMenuItem*)item atLocation:(NSPoint)location inView:(NSView*)view {
  NSWindow* window = [view window];
  const NSPoint inWindow = [view convertPoint:location toView:nil];
  // GNUstep shows the menu at the mouse: move it before tracking begins.
  [self displayTransient];
  NSMenuView* shown = [self menuRepresentation];
  [[shown window] setFrameOrigin:OriginOnScreen([window convertBaseToScreen:inWindow], [[shown window] frame].size,
                                                [[window screen] frame])];
  // The tracking loop swallows the mouse-up that matches its own mouse-down.
  [NSApp postEvent:MouseEvent(NSLeftMouseUp, inWindow, window) atStart:NO];
  [shown mouseDown:MouseEvent(NSLeftMouseDown, inWindow, window)];
  [self closeTransient];
  return NO;
}

@end

@implementation NSMenuItem (Completion)

- (BOOL)isHidden {
  return ItemProperties::Shared().Get(self).isHidden;
}

- (void)setHidden:(BOOL)hidden {
  if (hidden == [self isHidden]) return;
  ItemProperties::Shared().Change(self, [hidden](Properties& properties) { properties.isHidden = hidden; });
  [[self menu] itemChanged:self];
}

- (NSAttributedString*)attributedTitle {
  return ItemProperties::Shared().Get(self).title.Autoreleased();
}

- (void)setAttributedTitle:(NSAttributedString*)title {
  ItemProperties::Shared().Change(self, [title](Properties& properties) { properties.title = Copy(title); });
  [self setTitle:[title string]];
}

@end

namespace tessaro::platform {

namespace {

// ---- Opening and closing

// The menus on the screen.
NSMutableArray* OpenMenus() {
  static Forever<Ref<NSMutableArray>> menus(Adopt([[NSMutableArray alloc] init]));
  return *menus;
}

void WillOpen(NSMenu* menu) {
  if (menu == nil || [OpenMenus() indexOfObjectIdenticalTo:menu] != NSNotFound) return;
  [OpenMenus() addObject:menu];
  if ([[menu delegate] respondsToSelector:@selector(menuWillOpen:)]) [[menu delegate] menuWillOpen:menu];
}

void DidClose(NSMenu* menu) {
  const Ref<NSMenu> closed = Retain(menu);
  const NSUInteger count = [OpenMenus() count];
  [OpenMenus() removeObjectIdenticalTo:menu];
  if ([OpenMenus() count] == count) return;
  if ([[menu delegate] respondsToSelector:@selector(menuDidClose:)]) [[menu delegate] menuDidClose:menu];
}

ReplacedMethod<void (*)(NSMenu*, SEL)> displayTransient;
ReplacedMethod<void (*)(NSMenu*, SEL)> close;
ReplacedMethod<void (*)(NSMenu*, SEL)> closeTransient;

void DisplayTransient(NSMenu* menu, SEL selector) {
  WillOpen(menu);
  displayTransient(menu, selector);
}

void Close(NSMenu* menu, SEL selector) {
  close(menu, selector);
  DidClose(menu);
}

void CloseTransient(NSMenu* menu, SEL selector) {
  closeTransient(menu, selector);
  DidClose(menu);
}

// ---- Changes

ReplacedMethod<void (*)(NSMenu*, SEL, NSMenuItem*)> itemChanged;

// GNUstep validates all items of a menu whenever one changes, and again when the menu opens. Turning the menu's
// messages off prevents the former.
void ItemChanged(NSMenu* menu, SEL selector, NSMenuItem* item) {
  const BOOL sendsMessages = [menu menuChangedMessagesEnabled];
  [menu setMenuChangedMessagesEnabled:NO];
  itemChanged(menu, selector, item);
  [menu setMenuChangedMessagesEnabled:sendsMessages];
  if ([[menu window] isVisible]) [menu update];
}

// ---- Key equivalents

// Items are validated only when their menu is updated.
bool Perform(NSMenu* menu, NSInteger index) {
  [menu update];
  if (![[menu itemAtIndex:index] isEnabled]) return false;
  // performActionWithHighlightingForItemAtIndex: would block the application for a tenth of a second.
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

ReplacedMethod<BOOL (*)(NSMenu*, SEL, NSEvent*)> performKeyEquivalent;

ReplacedMethod<NSString* (*)(NSMenuItemCell*, SEL)> keyEquivalentString;

NSString* KeyEquivalentString(NSMenuItemCell* cell, SEL) { return ShortcutText([cell menuItem]); }

ReplacedMethod<void (*)(NSMenuItem*, SEL)> updateKeyEquivalent;
int searchesPrevented = 0;

void UpdateKeyEquivalent(NSMenuItem* item, SEL selector) {
  if (searchesPrevented == 0) updateKeyEquivalent(item, selector);
}

// ---- The menu on the screen

ReplacedMethod<void (*)(NSMenuView*, SEL, NSInteger)> attachSubmenu;
ReplacedMethod<CGFloat (*)(NSMenuView*, SEL, NSInteger)> heightForItem;
ReplacedMethod<NSRect (*)(NSMenuView*, SEL, NSInteger)> rectOfItem;
ReplacedMethod<void (*)(NSMenuView*, SEL, NSNotification*)> redrawChangedItem;

void AttachSubmenu(NSMenuView* view, SEL selector, NSInteger index) {
  if (index >= 0) WillOpen([[[view menu] itemAtIndex:index] submenu]);
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

WithoutUserShortcuts::WithoutUserShortcuts() { ++searchesPrevented; }

WithoutUserShortcuts::~WithoutUserShortcuts() { --searchesPrevented; }

void CompleteMenus() {
  displayTransient.With([NSMenu class], "displayTransient", DisplayTransient);
  close.With([NSMenu class], "close", Close);
  closeTransient.With([NSMenu class], "closeTransient", CloseTransient);
  itemChanged.With([NSMenu class], "itemChanged:", ItemChanged);
  performKeyEquivalent.With([NSMenu class], "performKeyEquivalent:", MenuPerformKeyEquivalent);
  updateKeyEquivalent.With([NSMenuItem class], "_updateKeyEquivalent", UpdateKeyEquivalent);
  keyEquivalentString.With([NSMenuItemCell class], "_keyEquivalentString", KeyEquivalentString);
  attachSubmenu.With([NSMenuView class], "attachSubmenuForItemAtIndex:", AttachSubmenu);
  heightForItem.With([NSMenuView class], "heightForItem:", HeightForItem);
  rectOfItem.With([NSMenuView class], "rectOfItemAtIndex:", RectOfItem);
  redrawChangedItem.With([NSMenuView class], "itemChanged:", RedrawChangedItem);
}

}  // namespace tessaro::platform
