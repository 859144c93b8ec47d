#import "Platform/Linux/AppKit/NSMenu+Items.h"

@implementation NSMenu (Items)

// From the end, so that nothing has to move up.
- (void)removeAllItems {
  for (NSInteger index = [self numberOfItems]; index > 0; --index) [self removeItemAtIndex:index - 1];
}

@end
