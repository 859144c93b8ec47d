#pragma once

#import <AppKit/NSView.h>

@class WebContentsViewCocoa;

// Holds the page, and would hold the developer tools beside it.
@interface BRYInspectableWebContentsView : NSView

- (WebContentsViewCocoa*)webContentsView;

@end
