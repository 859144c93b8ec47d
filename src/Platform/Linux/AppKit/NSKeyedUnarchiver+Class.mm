#import "Platform/Linux/AppKit/NSKeyedUnarchiver+Class.h"

#import <Foundation/Foundation.h>

#include <string_view>

#include "Base/Ref.h"
#include "Platform/Common/PropertyLists.h"

namespace {

// More than any flat object takes.
constexpr std::size_t kMostBytes = 16384;

bool IsReadable(NSData* data) {
  const std::string_view bytes(static_cast<const char*>([data bytes]), [data length]);
  return bytes.size() <= kMostBytes && tessaro::platform::IsSoundPropertyList(bytes);
}

// The object that a reference of the archive names; nil if missing.
id Target(NSArray* objects, id reference) {
  NSNumber* index = As<NSNumber>([As<NSDictionary>(reference) objectForKey:@"CF$UID"]);
  if (index == nil) return nil;
  const NSUInteger place = [index unsignedIntegerValue];
  return place < [objects count] ? [objects objectAtIndex:place] : nil;
}

bool IsFlat(NSDictionary* object) {
  for (NSString* key in object) {
    const bool isReference = As<NSDictionary>([object objectForKey:key]) != nil;
    if (isReference != [key isEqualToString:@"$class"]) return false;
  }
  return true;
}

// nil for data that are no property list.
id PropertyList(NSData* data) {
  if (!IsReadable(data)) return nil;
  return [NSPropertyListSerialization propertyListWithData:data
                                                   options:NSPropertyListImmutable
                                                    format:nullptr
                                                     error:nullptr];
}

// Whether the whole of the archive is one flat object of the class.
bool IsArchiveOf(Class expected, id archive) {
  NSArray* objects = As<NSArray>([As<NSDictionary>(archive) objectForKey:@"$objects"]);
  NSDictionary* top = As<NSDictionary>([As<NSDictionary>(archive) objectForKey:@"$top"]);
  NSDictionary* root = As<NSDictionary>(Target(objects, [top objectForKey:@"root"]));
  NSDictionary* description = As<NSDictionary>(Target(objects, [root objectForKey:@"$class"]));
  return root != nil && IsFlat(root) && [NSStringFromClass(expected) isEqual:[description objectForKey:@"$classname"]];
}

void SetError(NSError** error, NSString* reason) {
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
    SetError(error, [NSString stringWithFormat:@"The data are no archive of %@", NSStringFromClass(expected)]);
  } @catch (NSException* exception) {
    SetError(error, [exception reason]);
  }
  return nil;
}

@end
