#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSTheme.h>

#include "Base/Ref.h"
#include "Base/TsReplaceMethod.h"
#include "Platform/SystemAppearance.h"
#include "Platform/Toolbars.h"

// What GNUstep's toolbars leave out: items of the system that the delegate does not list among the allowed ones, the
// selection that is made while items are created, the views of items, and a look for dark desktops.

@interface NSToolbar (TsPrivate)
- (NSArray*)_itemsWithIdentifier:(NSString*)identifier;
- (NSArray*)_defaultItemIdentifiers;
- (NSArray*)_allowedItemIdentifiers;
- (NSDictionary*)_config;
- (void)_saveConfig;
@end

@interface NSToolbarItem (TsPrivate)
- (BOOL)_selectable;
- (void)_setSelectable:(BOOL)isSelectable;
- (void)_setSelected:(BOOL)isSelected;
@end

@interface NSView (TsToolbarBackView)
- (NSToolbarItem*)toolbarItem;
@end

namespace {

constexpr CGFloat kLabelHeight = 20;

template <typename Method>
Method Exchange(Class owner, SEL selector, const char* alias, Method method) {
  return reinterpret_cast<Method>(
      TsReplaceMethod(owner, selector, sel_registerName(alias), reinterpret_cast<IMP>(method)));
}

// ---- Allowed items

using InsertItem = void (*)(NSToolbar*, SEL, NSString*, int, BOOL);
using AllowedIdentifiers = NSArray* (*)(NSToolbar*, SEL);
using SetImage = void (*)(NSToolbarItem*, SEL, NSImage*);
using Layout = void (*)(NSView*, SEL);

InsertItem insertItem = nullptr;
AllowedIdentifiers allowedIdentifiers = nullptr;
SetImage setImage = nullptr;
Layout layout = nullptr;

// What is being inserted: the delegate is asked what is allowed on the way.
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

// The palette offers what the delegate allows; default items, and what the application inserts itself, need not be
// among that.
NSArray* AllowedAndInserted(NSToolbar* toolbar, SEL selector) {
  NSArray* allowed = allowedIdentifiers(toolbar, selector);
  if (identifierBeingInserted == nil || [allowed containsObject:identifierBeingInserted]) return allowed;
  return [allowed arrayByAddingObject:identifierBeingInserted];
}

// ---- The saved configuration

using Configuration = NSDictionary* (*)(NSToolbar*, SEL);
using Save = void (*)(NSToolbar*, SEL);
using SetDisplayMode = void (*)(NSToolbar*, SEL, NSToolbarDisplayMode);

Configuration configuration = nullptr;
Save save = nullptr;
SetDisplayMode setDisplayMode = nullptr;

// GNUstep saves every toolbar's items, and makes the next one of that name of them, whether it is to or not.
NSDictionary* ConfigurationIfAutosaved(NSToolbar* toolbar, SEL selector) {
  return [toolbar autosavesConfiguration] ? configuration(toolbar, selector) : nil;
}

// Half a minute later, as usual for preferences, the process may have ended.
void SaveIfAutosaved(NSToolbar* toolbar, SEL selector) {
  if (![toolbar autosavesConfiguration]) return;
  save(toolbar, selector);
  [[NSUserDefaults standardUserDefaults] synchronize];
}

// It saves the way items are shown only when it happens to save the items afterwards.
void SetAndSaveDisplayMode(NSToolbar* toolbar, SEL selector, NSToolbarDisplayMode mode) {
  const bool isOther = mode != [toolbar displayMode];
  setDisplayMode(toolbar, selector, mode);
  if (isOther && [[toolbar items] count] > 0) [toolbar _saveConfig];
}

// ---- Views

// An item's image is its view's, where there is a view that can show one.
void SetItemImage(NSToolbarItem* item, SEL selector, NSImage* image) {
  setImage(item, selector, image);
  if (![[item view] isKindOfClass:[NSButton class]]) return;
  auto* button = static_cast<NSButton*>([item view]);
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

// GNUstep selects items, but doesn't show it.
void DrawSelection(NSButton* button, SEL selector, NSRect dirty) {
  if ([button state] == NSOnState) {
    [[NSColor colorWithCalibratedWhite:tessaro::platform::IsDarkMode() ? 1 : 0 alpha:0.2] set];
    [[NSBezierPath bezierPathWithRoundedRect:NSInsetRect([button bounds], 2, 2) xRadius:4 yRadius:4] fill];
  }
  const IMP ordinary = class_getMethodImplementation([NSButton class], selector);
  reinterpret_cast<void (*)(NSButton*, SEL, NSRect)>(ordinary)(button, selector, dirty);
}

// ---- The dark look

using BackgroundColor = NSColor* (*)(id, SEL);
using Draw = void (*)(NSView*, SEL, NSRect);

BackgroundColor backgroundColor = nullptr;
BackgroundColor textColor = nullptr;
Draw drawBackView = nullptr;

constexpr CGFloat kLabelBottom = 4;

NSColor* Background(id theme, SEL selector) {
  if (!tessaro::platform::IsDarkMode()) return backgroundColor(theme, selector);
  return [NSColor colorWithCalibratedWhite:0.16 alpha:1];
}

NSColor* DarkLabelColor() { return [NSColor colorWithCalibratedWhite:0.9 alpha:1]; }

NSColor* LabelColor(id cell, SEL selector) {
  return tessaro::platform::IsDarkMode() ? DarkLabelColor() : textColor(cell, selector);
}

void DrawLabel(NSView* view, SEL selector, NSRect dirty) {
  if (!tessaro::platform::IsDarkMode()) return drawBackView(view, selector, dirty);
  NSToolbarItem* item = [view toolbarItem];
  if ([[item toolbar] displayMode] == NSToolbarDisplayModeIconOnly) return;
  NSDictionary* attributes = @{
    NSForegroundColorAttributeName : DarkLabelColor(),
    NSFontAttributeName : [NSFont systemFontOfSize:11],
  };
  const CGFloat width = [[item label] sizeWithAttributes:attributes].width;
  [[item label] drawAtPoint:NSMakePoint(NSMidX([view bounds]) - width / 2, kLabelBottom) withAttributes:attributes];
}

}  // namespace

// The run time takes a category's method before the class's own.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@interface NSToolbar (Completion)
@end

@implementation NSToolbar (Completion)

// GNUstep refuses what is not there yet, and what it has not yet found out to be selectable.
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

void CompleteToolbars() {
  if (insertItem != nullptr) return;
  insertItem = Exchange([NSToolbar class], @selector(_insertItemWithItemIdentifier:atIndex:broadcast:),
                        "ts_insertItem:", InsertAnyItem);
  allowedIdentifiers =
      Exchange([NSToolbar class], @selector(_allowedItemIdentifiers), "ts_allowedItemIdentifiers", AllowedAndInserted);
  configuration = Exchange([NSToolbar class], @selector(_config), "ts_config", ConfigurationIfAutosaved);
  save = Exchange([NSToolbar class], @selector(_saveConfig), "ts_saveConfig", SaveIfAutosaved);
  setDisplayMode = Exchange([NSToolbar class], @selector(setDisplayMode:), "ts_setDisplayMode:", SetAndSaveDisplayMode);
  setImage = Exchange([NSToolbarItem class], @selector(setImage:), "ts_setImage:", SetItemImage);
  layout = Exchange(NSClassFromString(@"GSToolbarBackView"), @selector(layout), "ts_layout", LayOutWithView);
  backgroundColor = Exchange(NSClassFromString(@"GSTheme"), @selector(toolbarBackgroundColor),
                             "ts_toolbarBackgroundColor", Background);
  textColor = Exchange(NSClassFromString(@"GSToolbarButtonCell"), @selector(textColor), "ts_textColor", LabelColor);
  drawBackView = Exchange(NSClassFromString(@"GSToolbarBackView"), @selector(drawRect:), "ts_drawRect:", DrawLabel);
  Class button = NSClassFromString(@"GSToolbarButton");
  class_addMethod(button, @selector(drawRect:), reinterpret_cast<IMP>(DrawSelection),
                  method_getTypeEncoding(class_getInstanceMethod(button, @selector(drawRect:))));
}

}  // namespace tessaro::platform
