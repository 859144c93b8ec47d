#pragma once

#import <AppKit/NSWindow.h>

// GNUstep doesn't announce that a window has come to a screen of another resolution; others may.
extern "C" NSString* const NSWindowDidChangeBackingPropertiesNotification;

@interface NSWindow (Sheets)

// GNUstep attaches one sheet at most.
- (NSArray*)sheets;

@end
