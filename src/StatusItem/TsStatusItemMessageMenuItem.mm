#import "StatusItem/TsStatusItemMessageMenuItem.h"

#import "Extensions/NSString+TsFormat.h"
#include "StatusItem/SmallTitle.h"

namespace {

constexpr NSUInteger kLongestTitle = 60;

NSString* Shortened(NSString* title) {
  if ([title length] <= kLongestTitle) return title;
  return [[title ts_prefixOfLength:kLongestTitle] stringByAppendingString:@"..."];
}

}  // namespace

@implementation TsStatusItemMessageMenuItem

- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)keyEquivalent {
  self = [super initWithTitle:@"" action:action keyEquivalent:keyEquivalent];
  if (self) [self setAttributedTitle:SmallTitle(Shortened(title))];
  return self;
}

@end
