#pragma once

#include <AppKit/AppKit.h>

@class QLPreviewPanel;
@protocol QLPreviewItem <NSObject>
@property(readonly) NSURL* previewItemURL;
@end
@interface NSURL (QLPreviewConvenienceAdditions) <QLPreviewItem>
@end
@protocol QLPreviewPanelDataSource
- (NSInteger)numberOfPreviewItemsInPreviewPanel:(QLPreviewPanel*)panel;
- (id<QLPreviewItem>)previewPanel:(QLPreviewPanel*)panel previewItemAtIndex:(NSInteger)index;
@end
@interface QLPreviewPanel : NSPanel
+ (QLPreviewPanel*)sharedPreviewPanel;
@property(assign) id<QLPreviewPanelDataSource> dataSource;
@property NSInteger currentPreviewItemIndex;
- (void)reloadData;
@end
