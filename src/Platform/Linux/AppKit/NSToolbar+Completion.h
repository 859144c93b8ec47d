#pragma once

#import <AppKit/NSToolbar.h>

// No system but macOS has such an item; toolbars leave it out.
extern "C" NSString* const NSToolbarCloudSharingItemIdentifier;

// The methods are those that GNUstep looks for.
@protocol NSToolbarDelegate <NSObject>
@end

// GNUstep knows no extensions that could bring items. The switch is kept, so that it reads as it was set.
@interface NSToolbar (Completion)

- (BOOL)allowsExtensionItems;
- (void)setAllowsExtensionItems:(BOOL)allows;

@end
