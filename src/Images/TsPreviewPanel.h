#pragma once

#import "Platform/Cocoa.h"

#include <cstdint>

#include "Base/Ref.h"
#include "Utilities/TsPendingCallback.h"

// Shows files one after the other over a window, `paths[index]` first, until it is closed. There is one such panel:
// asked for again, it closes and opens anew. `closed` is called once, on a later turn of the event loop, with the path
// that was shown last; with nil when nothing could be shown.
void TsQuickLook(NSWindow* window, NSArray* paths, NSInteger index, const TsCompletion& closed);

// The panel: arrow keys and buttons turn over, Escape and Space close it, and so does the end of its window.
@interface TsPreviewPanel : NSPanel {
  Ref<NSArray> _paths;
  NSUInteger _index;
  TsCompletion _closed;
  // Counts what has been shown, so that a preview that comes late is known.
  std::uint64_t _turn;
  NSImageView* _imageView;
  NSTextField* _label;
  NSButton* _previous;
  NSButton* _next;
}

+ (TsPreviewPanel*)sharedPanel;

- (void)showPaths:(NSArray*)paths
            index:(NSUInteger)index
       overWindow:(NSWindow*)window
           closed:(const TsCompletion&)closed;

- (IBAction)showPrevious:(id)sender;
- (IBAction)showNext:(id)sender;
- (IBAction)openFile:(id)sender;

@end
