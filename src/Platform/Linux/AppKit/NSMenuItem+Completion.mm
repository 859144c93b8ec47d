#import "Platform/Linux/AppKit/NSMenuItem+Completion.h"

#import <AppKit/AppKit.h>

#include "Base/Ref.h"
#include "Platform/Linux/AppKit/Completion.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"
#include "Platform/Linux/AppKit/SideTable.h"
#include "Platform/Linux/Keyboard/ShortcutText.h"

namespace {

struct Properties {
  bool isHidden = false;
  Ref<NSAttributedString> title;
};

using ItemProperties = tessaro::platform::SideTable<NSMenuItem, Properties>;

}  // namespace

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

ReplacedMethod<NSString* (*)(NSMenuItemCell*, SEL)> keyEquivalentString;

NSString* KeyEquivalentString(NSMenuItemCell* cell, SEL) { return ShortcutText([cell menuItem]); }

ReplacedMethod<void (*)(NSMenuItem*, SEL)> updateKeyEquivalent;
int searchesPrevented = 0;

void UpdateKeyEquivalent(NSMenuItem* item, SEL selector) {
  if (searchesPrevented == 0) updateKeyEquivalent(item, selector);
}

}  // namespace

WithoutUserShortcuts::WithoutUserShortcuts() { ++searchesPrevented; }

WithoutUserShortcuts::~WithoutUserShortcuts() { --searchesPrevented; }

void CompleteMenuItems() {
  updateKeyEquivalent.With([NSMenuItem class], "_updateKeyEquivalent", UpdateKeyEquivalent);
  keyEquivalentString.With([NSMenuItemCell class], "_keyEquivalentString", KeyEquivalentString);
}

}  // namespace tessaro::platform
