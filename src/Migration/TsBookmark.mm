#import "Migration/TsBookmark.h"

@implementation TsBookmark

@dynamic order, title, url;

- (void)awakeFromInsert {
  [self setOrder:[NSNumber numberWithInt:0]];
  [self setTitle:@""];
  [self setUrl:@""];
}

- (TsAccount*)account {
  return [self objectIn:"account"];
}

@end
