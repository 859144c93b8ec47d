#pragma once

#import <AppKit/NSMenu.h>

@interface NSMenu (Items)

- (void)removeAllItems;

@end
