#pragma once

#include <AppKit/NSWindow.h>

enum NSAlertStyle : NSUInteger { NSAlertStyleWarning = 0, NSAlertStyleInformational = 1, NSAlertStyleCritical = 2 };
static const NSAlertStyle NSInformationalAlertStyle API_DEPRECATED("", macos(10.0, 10.12)) = NSAlertStyleInformational;
@interface NSAlert : NSObject
@property NSAlertStyle alertStyle;
@property(copy) NSString* messageText;
@property(copy) NSString* informativeText;
- (NSButton*)addButtonWithTitle:(NSString*)title;
- (NSModalResponse)runModal;
@end
