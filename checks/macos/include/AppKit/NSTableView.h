#pragma once

#include <AppKit/NSControl.h>

@class NSTableView, NSTableHeaderView;
@protocol NSTableViewDataSource <NSObject>
@optional
- (NSInteger)numberOfRowsInTableView:(NSTableView*)view;
- (id)tableView:(NSTableView*)view objectValueForTableColumn:(id)column row:(NSInteger)row;
@end
@protocol NSTableViewDelegate <NSObject>
@optional
- (void)tableViewSelectionDidChange:(NSNotification*)notification;
@end
@interface NSTableColumn : NSObject
- (instancetype)initWithIdentifier:(NSString*)identifier;
@property(readonly, copy) NSString* identifier;
@property(copy) NSString* title;
@property(getter=isEditable) BOOL editable;
@property CGFloat width;
@end
@interface NSTableView : NSControl
@property(assign) id<NSTableViewDataSource> dataSource;
@property(assign) id<NSTableViewDelegate> delegate;
@property(strong) NSTableHeaderView* headerView;
@property CGFloat rowHeight;
@property(strong) NSView* cornerView;
@property BOOL allowsMultipleSelection;
@property BOOL allowsEmptySelection;
@property SEL doubleAction;
@property(readonly) NSInteger selectedRow;
@property(readonly) NSInteger clickedRow;
@property(readonly) NSInteger numberOfSelectedRows;
@property(readonly, copy) NSIndexSet* selectedRowIndexes;
- (void)addTableColumn:(NSTableColumn*)column;
- (void)reloadData;
- (void)deselectAll:(id)sender;
- (void)selectRowIndexes:(NSIndexSet*)indexes byExtendingSelection:(BOOL)extends;
@end
