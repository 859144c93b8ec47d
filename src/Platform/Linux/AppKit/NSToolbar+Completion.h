#pragma once

#import <AppKit/NSToolbar.h>

// Only macOS has this item; toolbars leave it out.
extern "C" NSString* const NSToolbarCloudSharingItemIdentifier;

// GNUstep declares no such protocol, but calls its methods.
@protocol NSToolbarDelegate <NSObject>
@end

// GNUstep has no extension items. The flag is only stored.
@interface NSToolbar (Completion)

- (BOOL)allowsExtensionItems;
- (void)setAllowsExtensionItems:(BOOL)allows;

@end
