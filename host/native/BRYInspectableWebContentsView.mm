#import "native/BRYInspectableWebContentsView.h"

#import <AppKit/AppKit.h>

#include "Base/Ref.h"
#import "native/WebContentsViewCocoa.h"

@implementation BRYInspectableWebContentsView

- (instancetype)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  if (self == nil) return nil;
  auto page = Adopt([[WebContentsViewCocoa alloc] initWithFrame:[self bounds]]);
  [page setAutoresizingMask:NSViewWidthSizable | NSViewHeightSizable];
  [self addSubview:page];
  return self;
}

- (WebContentsViewCocoa*)webContentsView {
  return [[self subviews] objectAtIndex:0];
}

@end
