#pragma once

#include <AppKit/NSEvent.h>

@protocol NSMenuDelegate <NSObject>
@optional
- (void)menuNeedsUpdate:(NSMenu*)menu;
- (NSInteger)numberOfItemsInMenu:(NSMenu*)menu;
- (BOOL)menu:(NSMenu*)menu updateItem:(NSMenuItem*)item atIndex:(NSInteger)index shouldCancel:(BOOL)shouldCancel;
- (BOOL)menuHasKeyEquivalent:(NSMenu*)menu forEvent:(NSEvent*)event target:(id*)target action:(SEL*)action;
- (void)menuWillOpen:(NSMenu*)menu;
- (void)menuDidClose:(NSMenu*)menu;
- (void)menu:(NSMenu*)menu willHighlightItem:(NSMenuItem*)item;
@end

@interface NSMenu : NSObject <NSCopying>
- (instancetype)initWithTitle:(NSString*)title;
@property(copy) NSString* title;
@property(assign) NSMenu* supermenu;
@property(assign) id<NSMenuDelegate> delegate;
@property BOOL autoenablesItems;
@property(readonly, copy) NSArray* itemArray;
@property(readonly) NSInteger numberOfItems;
- (NSMenuItem*)itemAtIndex:(NSInteger)index;
- (NSMenuItem*)itemWithTitle:(NSString*)title;
- (NSMenuItem*)itemWithTag:(NSInteger)tag;
- (NSInteger)indexOfItem:(NSMenuItem*)item;
- (void)addItem:(NSMenuItem*)item;
- (void)insertItem:(NSMenuItem*)item atIndex:(NSInteger)index;
- (void)removeItem:(NSMenuItem*)item;
- (void)removeItemAtIndex:(NSInteger)index;
- (void)removeAllItems;
- (NSMenuItem*)addItemWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)key;
- (void)setSubmenu:(NSMenu*)menu forItem:(NSMenuItem*)item;
- (void)update;
- (BOOL)performKeyEquivalent:(NSEvent*)event;
- (void)performActionForItemAtIndex:(NSInteger)index;
- (BOOL)popUpMenuPositioningItem:(NSMenuItem*)item atLocation:(NSPoint)location inView:(NSView*)view;
@end
