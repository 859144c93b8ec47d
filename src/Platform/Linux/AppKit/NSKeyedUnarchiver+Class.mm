#import "Platform/Linux/AppKit/NSKeyedUnarchiver+Class.h"

#import <Foundation/Foundation.h>

#include <string_view>

#include "Platform/Common/BinaryPropertyList.h"

using tessaro::platform::IsSoundBinaryPropertyList;

namespace {

// More than any object without objects takes, and less than GNUstep's reader of texts needs to get lost in brackets.
constexpr std::size_t kMostBytes = 16384;

// GNUstep also reads forms of its own, one of which makes objects of any class.
bool IsReadable(NSData* data) {
  const std::string_view bytes(static_cast<const char*>([data bytes]), [data length]);
  return bytes.size() <= kMostBytes && (bytes.starts_with("<?xml") || IsSoundBinaryPropertyList(bytes));
}

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

// nil when it is none.
id PropertyList(NSData* data) {
  if (!IsReadable(data)) return nil;
  return [NSPropertyListSerialization propertyListWithData:data
                                                   options:NSPropertyListImmutable
                                                    format:nullptr
                                                     error:nullptr];
}

// Whether the whole of the archive is one flat object of the class.
bool IsArchiveOf(Class expected, id archive) {
  id listed = [Dictionary(archive) objectForKey:@"$objects"];
  NSArray* objects = [listed isKindOfClass:[NSArray class]] ? listed : nil;
  NSDictionary* top = Dictionary([Dictionary(archive) objectForKey:@"$top"]);
  NSDictionary* root = Dictionary(Target(objects, [top objectForKey:@"root"]));
  NSDictionary* description = Dictionary(Target(objects, [root objectForKey:@"$class"]));
  return root != nil && IsFlat(root) && [NSStringFromClass(expected) isEqual:[description objectForKey:@"$classname"]];
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
    if (IsArchiveOf(expected, PropertyList(data))) return [NSKeyedUnarchiver unarchiveObjectWithData:data];
    Tell(error, [NSString stringWithFormat:@"This is no archive of %@", NSStringFromClass(expected)]);
  } @catch (NSException* exception) {
    Tell(error, [exception reason]);
  }
  return nil;
}

@end
