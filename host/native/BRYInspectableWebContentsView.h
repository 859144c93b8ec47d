#pragma once

#import <AppKit/NSView.h>

@class WebContentsViewCocoa;

// Contains the page; with developer tools it would contain those too.
@interface BRYInspectableWebContentsView : NSView

- (WebContentsViewCocoa*)webContentsView;

@end
