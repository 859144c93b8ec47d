#pragma once

#include <AppKit/NSControl.h>

using NSToolbarIdentifier = NSString*;
using NSToolbarItemIdentifier = NSString*;
APPKIT_EXTERN NSToolbarItemIdentifier const NSToolbarSpaceItemIdentifier;
APPKIT_EXTERN NSToolbarItemIdentifier const NSToolbarFlexibleSpaceItemIdentifier;
APPKIT_EXTERN NSToolbarItemIdentifier const NSToolbarShowColorsItemIdentifier;
APPKIT_EXTERN NSToolbarItemIdentifier const NSToolbarPrintItemIdentifier;
APPKIT_EXTERN NSToolbarItemIdentifier const NSToolbarCloudSharingItemIdentifier;
APPKIT_EXTERN NSToolbarItemIdentifier const NSToolbarSeparatorItemIdentifier API_DEPRECATED("", macos(10.0, 10.7));
APPKIT_EXTERN NSToolbarItemIdentifier const NSToolbarCustomizeToolbarItemIdentifier API_DEPRECATED("",
                                                                                                   macos(10.0, 10.7));
enum NSToolbarDisplayMode : NSUInteger {
  NSToolbarDisplayModeDefault = 0,
  NSToolbarDisplayModeIconAndLabel = 1,
  NSToolbarDisplayModeIconOnly = 2,
};
enum NSToolbarSizeMode : NSUInteger { NSToolbarSizeModeDefault = 0 };

@protocol NSToolbarDelegate <NSObject>
@optional
- (NSToolbarItem*)toolbar:(NSToolbar*)toolbar
        itemForItemIdentifier:(NSToolbarItemIdentifier)identifier
    willBeInsertedIntoToolbar:(BOOL)inserted;
- (NSArray*)toolbarDefaultItemIdentifiers:(NSToolbar*)toolbar;
- (NSArray*)toolbarAllowedItemIdentifiers:(NSToolbar*)toolbar;
- (NSArray*)toolbarSelectableItemIdentifiers:(NSToolbar*)toolbar;
- (void)toolbarWillAddItem:(NSNotification*)notification;
- (void)toolbarDidRemoveItem:(NSNotification*)notification;
@end

@interface NSToolbar : NSObject
- (instancetype)initWithIdentifier:(NSToolbarIdentifier)identifier;
@property(readonly, copy) NSToolbarIdentifier identifier;
@property(assign) id<NSToolbarDelegate> delegate;
@property(getter=isVisible) BOOL visible;
@property BOOL allowsUserCustomization;
@property BOOL autosavesConfiguration;
@property BOOL allowsExtensionItems;
@property BOOL showsBaselineSeparator API_DEPRECATED("", macos(10.4, 15.0));
@property NSToolbarDisplayMode displayMode;
@property(copy) NSToolbarItemIdentifier selectedItemIdentifier;
@property(readonly, copy) NSArray* items;
@property(readonly, copy) NSArray* visibleItems;
@property(readonly) BOOL customizationPaletteIsRunning;
- (void)insertItemWithItemIdentifier:(NSToolbarItemIdentifier)identifier atIndex:(NSInteger)index;
- (void)removeItemAtIndex:(NSInteger)index;
- (void)runCustomizationPalette:(id)sender;
- (void)validateVisibleItems;
- (void)setConfigurationFromDictionary:(NSDictionary*)configuration;
@property(readonly, copy) NSDictionary* configurationDictionary;
@end

@interface NSToolbarItem : NSObject <NSCopying>
- (instancetype)initWithItemIdentifier:(NSToolbarItemIdentifier)identifier;
@property(readonly, copy) NSToolbarItemIdentifier itemIdentifier;
@property(readonly, assign) NSToolbar* toolbar;
@property(copy) NSString* label;
@property(copy) NSString* paletteLabel;
@property(copy) NSString* toolTip;
@property(strong) NSMenuItem* menuFormRepresentation;
@property NSInteger tag;
@property(assign) id target;
@property SEL action;
@property(getter=isEnabled) BOOL enabled;
@property(strong) NSImage* image;
@property(strong) NSView* view;
@property NSSize minSize API_DEPRECATED("", macos(10.0, 12.0));
@property NSSize maxSize API_DEPRECATED("", macos(10.0, 12.0));
@property BOOL autovalidates;
- (void)validate;
@end
