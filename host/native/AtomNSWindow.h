#pragma once

#import <AppKit/NSWindow.h>

@class WebContentsViewCocoa;

// A browser window: its content is one BRYInspectableWebContentsView that fills it.
@interface AtomNSWindow : NSWindow

- (instancetype)initWithTitle:(NSString*)title size:(NSSize)size;
- (WebContentsViewCocoa*)webContentsView;

@end
