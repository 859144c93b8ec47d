#import "Platform/Linux/AppKit/NSToolbar+Completion.h"

#import <AppKit/AppKit.h>

#include "Platform/Linux/AppKit/Completion.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"
#include "Platform/Linux/AppKit/SideTable.h"

NSString* const NSToolbarCloudSharingItemIdentifier = @"NSToolbarCloudSharingItem";

@interface NSToolbar (TsPrivate)
- (NSArray*)_itemsWithIdentifier:(NSString*)identifier;
- (NSArray*)_allowedItemIdentifiers;
- (NSDictionary*)_config;
- (void)_saveConfig;
@end

@interface NSToolbarItem (TsPrivate)
- (void)_setSelectable:(BOOL)isSelectable;
- (void)_setSelected:(BOOL)isSelected;
@end

namespace {

using ExtensionMarks = tessaro::platform::SideTable<NSToolbar, bool>;

}  // namespace

@implementation NSToolbar (Completion)

- (BOOL)allowsExtensionItems {
  return ExtensionMarks::Shared().Get(self);
}

- (void)setAllowsExtensionItems:(BOOL)allows {
  ExtensionMarks::Shared().Set(self, allows);
}

// GNUstep refuses items that are not inserted yet, or not yet known to be selectable.
- (void)setSelectedItemIdentifier:(NSString*)identifier {
  for (NSToolbarItem* item in [self _itemsWithIdentifier:_selectedItemIdentifier]) [item _setSelected:NO];
  NSString* previous = _selectedItemIdentifier;
  _selectedItemIdentifier = [identifier copy];
  [previous release];
  if (identifier == nil) return;
  const BOOL isSelectable = [[_delegate toolbarSelectableItemIdentifiers:self] containsObject:identifier];
  if (!isSelectable) return;
  for (NSToolbarItem* item in [self _itemsWithIdentifier:identifier]) {
    [item _setSelectable:YES];
    [item _setSelected:YES];
  }
}

@end

namespace tessaro::platform {

namespace {

// ---- Allowed items

ReplacedMethod<void (*)(NSToolbar*, SEL, NSString*, int, BOOL)> insertItem;
ReplacedMethod<NSArray* (*)(NSToolbar*, SEL)> allowedIdentifiers;

// GNUstep asks the delegate for the allowed items while it inserts one.
NSString* identifierBeingInserted = nil;

void SelectInserted(NSToolbar* toolbar, NSString* identifier) {
  if ([[toolbar selectedItemIdentifier] isEqualToString:identifier]) [toolbar setSelectedItemIdentifier:identifier];
}

void InsertAnyItem(NSToolbar* toolbar, SEL selector, NSString* identifier, int index, BOOL isBroadcast) {
  NSString* outer = identifierBeingInserted;
  identifierBeingInserted = identifier;
  @try {
    insertItem(toolbar, selector, identifier, index, isBroadcast);
  } @finally {
    identifierBeingInserted = outer;
  }
  SelectInserted(toolbar, identifier);
}

// The palette offers the allowed items. Default items, and those that the application inserts, need not be among them.
NSArray* AllowedAndInserted(NSToolbar* toolbar, SEL selector) {
  NSArray* allowed = allowedIdentifiers(toolbar, selector);
  if (identifierBeingInserted == nil || [allowed containsObject:identifierBeingInserted]) return allowed;
  return [allowed arrayByAddingObject:identifierBeingInserted];
}

// ---- The saved configuration

ReplacedMethod<NSDictionary* (*)(NSToolbar*, SEL)> configuration;
ReplacedMethod<void (*)(NSToolbar*, SEL)> save;
ReplacedMethod<void (*)(NSToolbar*, SEL, NSToolbarDisplayMode)> setDisplayMode;

// GNUstep saves the items of every toolbar, and restores the next one of that name, whether it autosaves or not.
NSDictionary* ConfigurationIfAutosaved(NSToolbar* toolbar, SEL selector) {
  return [toolbar autosavesConfiguration] ? configuration(toolbar, selector) : nil;
}

// Preferences are written half a minute later, when the process may have ended.
void SaveIfAutosaved(NSToolbar* toolbar, SEL selector) {
  if (![toolbar autosavesConfiguration]) return;
  save(toolbar, selector);
  [[NSUserDefaults standardUserDefaults] synchronize];
}

// GNUstep saves the display mode only when the items change afterwards.
void SetAndSaveDisplayMode(NSToolbar* toolbar, SEL selector, NSToolbarDisplayMode mode) {
  const bool isOther = mode != [toolbar displayMode];
  setDisplayMode(toolbar, selector, mode);
  if (isOther && [[toolbar items] count] > 0) [toolbar _saveConfig];
}

}  // namespace

void CompleteToolbars() {
  insertItem.With([NSToolbar class], "_insertItemWithItemIdentifier:atIndex:broadcast:", InsertAnyItem);
  allowedIdentifiers.With([NSToolbar class], "_allowedItemIdentifiers", AllowedAndInserted);
  configuration.With([NSToolbar class], "_config", ConfigurationIfAutosaved);
  save.With([NSToolbar class], "_saveConfig", SaveIfAutosaved);
  setDisplayMode.With([NSToolbar class], "setDisplayMode:", SetAndSaveDisplayMode);
}

}  // namespace tessaro::platform
