#import "Migration/TsBookmark.h"

#import "Migration/TsManagedObjectContext.h"

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

+ (void)exportObject:(const TsStoreObject&)bookmark of:(const TsStoreFile&)store to:(TsExportText&)json {
  static const TsExport kExport("TsBookmark", {{"order"}, {"title"}, {"url"}});
  kExport.Open(json, store, bookmark);
  json.Put('}');
}

- (void)exportTo:(TsExportText&)json {
  [TsBookmark exportObject:*[self storeObject] of:*[[self managedObjectContext] store] to:json];
}

@end
