#pragma once

#import <AppKit/AppKit.h>

#include <cstdint>

#include "Base/Ref.h"
#include "Platform/PreviewPanel.h"

// Arrow keys and buttons change the file; Return opens the file in its application; Escape, Space, and the end of the
// window below close the panel.
@interface TsPreviewPanel : NSPanel {
  Ref<NSArray> _paths;
  NSUInteger _index;
  tessaro::platform::PreviewsClosed _closed;
  // Number of the file that is shown: a preview for an earlier one comes too late.
  std::uint64_t _turn;
  NSSize _openedSize;
  NSImageView* _imageView;
  NSTextField* _label;
  NSButton* _previous;
  NSButton* _next;
}

+ (TsPreviewPanel*)sharedPanel;

- (void)showPaths:(NSArray*)paths
            index:(NSUInteger)index
       overWindow:(NSWindow*)window
           closed:(tessaro::platform::PreviewsClosed)closed;

- (IBAction)showPrevious:(id)sender;
- (IBAction)showNext:(id)sender;
- (IBAction)openFile:(id)sender;

@end
