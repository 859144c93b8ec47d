#import "Platform/Linux/AppKit/CocoaAdditions.h"

#include "Base/Ref.h"
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

@interface NSView (TsToolbarBackView)
- (NSToolbarItem*)toolbarItem;
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

// ---- Views of items, which GNUstep leaves out

constexpr CGFloat kLabelHeight = 20;
constexpr CGFloat kLabelBottom = 4;

ReplacedMethod<void (*)(NSToolbarItem*, SEL, NSImage*)> setImage;
ReplacedMethod<void (*)(NSView*, SEL)> layout;
ReplacedMethod<void (*)(NSView*, SEL, NSRect)> drawBackView;
ReplacedMethod<void (*)(NSButton*, SEL, NSRect)> drawButton;
ReplacedMethod<NSColor* (*)(NSButtonCell*, SEL)> textColor;

// An item's view shows the item's image, if it can.
void SetItemImage(NSToolbarItem* item, SEL selector, NSImage* image) {
  setImage(item, selector, image);
  NSButton* button = As<NSButton>([item view]);
  [button setImage:image];
  [button setImagePosition:NSImageOnly];
}

void LayOutWithView(NSView* backView, SEL selector) {
  layout(backView, selector);
  NSToolbarItem* item = [backView toolbarItem];
  NSView* view = [item view];
  const NSToolbarDisplayMode mode = [[item toolbar] displayMode];
  if (view == nil || mode == NSToolbarDisplayModeLabelOnly) return;
  NSRect room = [backView bounds];
  if (mode != NSToolbarDisplayModeIconOnly) {
    room.origin.y += kLabelHeight;
    room.size.height -= kLabelHeight;
  }
  const NSSize size = [item minSize];
  const CGFloat width = MIN(size.width, NSWidth(room));
  const CGFloat height = MIN(size.height, NSHeight(room));
  [view setFrame:NSMakeRect(NSMidX(room) - width / 2, NSMidY(room) - height / 2, width, height)];
  if ([view superview] != backView) [backView addSubview:view];
}

// GNUstep doesn't show which item is selected.
void DrawSelection(NSButton* button, SEL selector, NSRect dirty) {
  if ([button state] == NSOnState) {
    // A named colour has no alpha.
    NSColor* text = [[NSColor controlTextColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace];
    [[text colorWithAlphaComponent:0.2] set];
    [[NSBezierPath bezierPathWithRoundedRect:NSInsetRect([button bounds], 2, 2) xRadius:4 yRadius:4] fill];
  }
  drawButton(button, selector, dirty);
}

// ---- Labels, which GNUstep draws black

NSColor* ColourOf(bool isEnabled) {
  return isEnabled ? [NSColor controlTextColor] : [NSColor disabledControlTextColor];
}

NSColor* LabelColor(NSButtonCell* cell, SEL) { return ColourOf([cell isEnabled]); }

void DrawLabel(NSView* view, SEL, NSRect) {
  NSToolbarItem* item = [view toolbarItem];
  if ([[item toolbar] displayMode] == NSToolbarDisplayModeIconOnly) return;
  NSDictionary* attributes = @{
    NSForegroundColorAttributeName : ColourOf([item isEnabled]),
    NSFontAttributeName : [NSFont systemFontOfSize:11],
  };
  const CGFloat width = [[item label] sizeWithAttributes:attributes].width;
  [[item label] drawAtPoint:NSMakePoint(NSMidX([view bounds]) - width / 2, kLabelBottom) withAttributes:attributes];
}

}  // namespace

void CompleteToolbars() {
  insertItem.With([NSToolbar class], "_insertItemWithItemIdentifier:atIndex:broadcast:", InsertAnyItem);
  allowedIdentifiers.With([NSToolbar class], "_allowedItemIdentifiers", AllowedAndInserted);
  configuration.With([NSToolbar class], "_config", ConfigurationIfAutosaved);
  save.With([NSToolbar class], "_saveConfig", SaveIfAutosaved);
  setDisplayMode.With([NSToolbar class], "setDisplayMode:", SetAndSaveDisplayMode);
  Class backView = NSClassFromString(@"GSToolbarBackView");
  setImage.With([NSToolbarItem class], "setImage:", SetItemImage);
  layout.With(backView, "layout", LayOutWithView);
  drawBackView.With(backView, "drawRect:", DrawLabel);
  textColor.With(NSClassFromString(@"GSToolbarButtonCell"), "textColor", LabelColor);
  drawButton.With(NSClassFromString(@"GSToolbarButton"), "drawRect:", DrawSelection);
}

}  // namespace tessaro::platform
