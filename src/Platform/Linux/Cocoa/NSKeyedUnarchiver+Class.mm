#import "Platform/Linux/Cocoa/NSKeyedUnarchiver+Class.h"

#import <Foundation/Foundation.h>

namespace {

NSDictionary* Dictionary(id value) { return [value isKindOfClass:[NSDictionary class]] ? value : nil; }

// What a reference of the archive leads to, nil where that is nothing.
id Target(NSArray* objects, id reference) {
  id index = [Dictionary(reference) objectForKey:@"CF$UID"];
  if (![index isKindOfClass:[NSNumber class]]) return nil;
  const NSUInteger place = [index unsignedIntegerValue];
  return place < [objects count] ? [objects objectAtIndex:place] : nil;
}

bool IsFlat(NSDictionary* object) {
  for (NSString* key in object) {
    const bool isReference = Dictionary([object objectForKey:key]) != nil;
    if (isReference != [key isEqualToString:@"$class"]) return false;
  }
  return true;
}

// Whether the whole of the archive is one flat object of the class.
bool IsArchiveOf(Class expected, id archive) {
  id listed = [Dictionary(archive) objectForKey:@"$objects"];
  NSArray* objects = [listed isKindOfClass:[NSArray class]] ? listed : nil;
  NSDictionary* top = Dictionary([Dictionary(archive) objectForKey:@"$top"]);
  NSDictionary* root = Dictionary(Target(objects, [top objectForKey:@"root"]));
  NSDictionary* description = Dictionary(Target(objects, [root objectForKey:@"$class"]));
  return root != nil && IsFlat(root) &&
         [NSStringFromClass(expected) isEqual:[description objectForKey:@"$classname"]];
}

void Tell(NSError** error, NSString* reason) {
  if (error == nullptr) return;
  *error = [NSError errorWithDomain:NSCocoaErrorDomain
                               code:NSFileReadCorruptFileError
                           userInfo:@{NSLocalizedDescriptionKey : reason}];
}

}  // namespace

@implementation NSKeyedUnarchiver (Class)

+ (id)unarchivedObjectOfClass:(Class)expected fromData:(NSData*)data error:(NSError**)error {
  @try {
    id archive = [NSPropertyListSerialization propertyListWithData:data
                                                           options:NSPropertyListImmutable
                                                            format:nullptr
                                                             error:nullptr];
    if (IsArchiveOf(expected, archive)) return [NSKeyedUnarchiver unarchiveObjectWithData:data];
    Tell(error, [NSString stringWithFormat:@"This is no archive of %@", NSStringFromClass(expected)]);
  } @catch (NSException* exception) {
    Tell(error, [exception reason]);
  }
  return nil;
}

@end
