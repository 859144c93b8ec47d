#import "StatusItem/TsStatusItemSmallMenuItem.h"

#include "StatusItem/SmallTitle.h"

@implementation TsStatusItemSmallMenuItem

- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)keyEquivalent {
  self = [super initWithTitle:@"" action:action keyEquivalent:keyEquivalent];
  if (self) [self setAttributedTitle:SmallTitle(title)];
  return self;
}

@end
