#import "Platform/Linux/AppKit/NSWindow+Tabbing.h"

static BOOL allowsAutomaticWindowTabbing = YES;

@implementation NSWindow (Tabbing)

+ (BOOL)allowsAutomaticWindowTabbing {
  return allowsAutomaticWindowTabbing;
}

+ (void)setAllowsAutomaticWindowTabbing:(BOOL)allows {
  allowsAutomaticWindowTabbing = allows;
}

@end
