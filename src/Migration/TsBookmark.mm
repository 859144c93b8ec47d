#import "Migration/TsBookmark.h"

#import "Migration/TsExport.h"

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

- (NSDictionary*)dictionaryWithValues {
  return TsExported({{@"order", [self order]}, {@"title", [self title]}, {@"url", [self url]}});
}

@end
