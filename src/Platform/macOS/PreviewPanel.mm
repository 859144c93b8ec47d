#include "Platform/PreviewPanel.h"

#import <Quartz/Quartz.h>

#include <utility>

#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/MainQueue.h"

// Quick Look's panel, of which there is one in a process. The host's windows may answer for it too, so the data source
// is set once the panel is in front. Main thread only; no consent.
@interface TsPreviewSource : NSObject <QLPreviewPanelDataSource> {
  Ref<NSMutableArray> _files;
  tessaro::platform::PreviewsClosed _closed;
}
- (void)showFiles:(NSArray*)files at:(NSInteger)index closed:(tessaro::platform::PreviewsClosed)closed;
- (void)end;
@end

@implementation TsPreviewSource

- (void)showFiles:(NSArray*)files at:(NSInteger)index closed:(tessaro::platform::PreviewsClosed)closed {
  [self end];
  _files = Adopt([[NSMutableArray alloc] initWithArray:files]);
  _closed = std::move(closed);
  QLPreviewPanel* panel = [QLPreviewPanel sharedPreviewPanel];
  NSNotificationCenter* center = [NSNotificationCenter defaultCenter];
  [center addObserver:self selector:@selector(panelWillClose:) name:NSWindowWillCloseNotification object:panel];
  [panel makeKeyAndOrderFront:nil];
  [panel setDataSource:self];
  [panel reloadData];
  [panel setCurrentPreviewItemIndex:index];
}

- (void)windowWillClose:(NSNotification*)notification {
  [[QLPreviewPanel sharedPreviewPanel] close];
}

- (void)panelWillClose:(NSNotification*)notification {
  [self end];
}

- (void)end {
  if (_closed == nullptr) return;
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  QLPreviewPanel* panel = [QLPreviewPanel sharedPreviewPanel];
  const NSInteger index = [panel currentPreviewItemIndex];
  const bool isKnown = index >= 0 && static_cast<NSUInteger>(index) < [_files count];
  std::string last = TsStdString([[_files objectAtIndex:isKnown ? static_cast<NSUInteger>(index) : 0] path]);
  if ([panel dataSource] == self) [panel setDataSource:nil];
  tessaro::platform::MainQueue::Shared().Post(
      [closed = std::exchange(_closed, nullptr), last = std::move(last)] { closed(last); });
}

- (NSInteger)numberOfPreviewItemsInPreviewPanel:(QLPreviewPanel*)panel {
  return static_cast<NSInteger>([_files count]);
}

- (id<QLPreviewItem>)previewPanel:(QLPreviewPanel*)panel previewItemAtIndex:(NSInteger)index {
  return [_files objectAtIndex:static_cast<NSUInteger>(index)];
}

@end

namespace tessaro::platform {

void ShowPreviews(NSWindow* window, const std::vector<std::string>& paths, std::size_t index, PreviewsClosed closed) {
  [[clang::no_destroy]] static const auto source = Adopt([[TsPreviewSource alloc] init]);
  NSMutableArray* files = [NSMutableArray array];
  for (const std::string& path : paths) [files addObject:[NSURL fileURLWithPath:TsNSString(path)]];
  [source showFiles:files at:static_cast<NSInteger>(index) closed:std::move(closed)];
  [[NSNotificationCenter defaultCenter] addObserver:source.get()
                                           selector:@selector(windowWillClose:)
                                               name:NSWindowWillCloseNotification
                                             object:window];
}

}  // namespace tessaro::platform
