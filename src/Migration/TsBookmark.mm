#import "Migration/TsBookmark.h"

#import "Migration/TsExport.h"
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

+ (Ref<NSDictionary>)newExportOf:(const TsStoreObject&)bookmark in:(const TsStoreFile&)store {
  static const TsExport kExport("TsBookmark", {{"order"}, {"title"}, {"url"}});
  return kExport.NewDictionary(store, bookmark);
}

- (NSDictionary*)dictionaryWithValues {
  if ([self managedObjectContext] == nil) return nil;
  return [TsBookmark newExportOf:*[self storeObject] in:*[[self managedObjectContext] store]].Autoreleased();
}

@end
