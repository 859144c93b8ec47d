#pragma once

#import <AppKit/NSWindow.h>

// GNUstep's windows know no tabs. The switch for them is kept, so that it reads as it was set.
@interface NSWindow (Tabbing)

+ (BOOL)allowsAutomaticWindowTabbing;
+ (void)setAllowsAutomaticWindowTabbing:(BOOL)allows;

@end
