#import "Platform/Linux/AppKit/CocoaAdditions.h"

#include <string>
#include <string_view>

#include "Base/Ref.h"
#include "Platform/Common/PropertyLists.h"
#include "Platform/Linux/AppKit/ReplacedMethod.h"

namespace platform = tessaro::platform;

namespace {

platform::ReplacedMethod<NSData* (*)(id, SEL, id, NSPropertyListFormat, NSString**)> gnustepWriter;
platform::ReplacedMethod<id (*)(id, SEL, NSData*, NSPropertyListReadOptions, NSPropertyListFormat*, NSError**)>
    gnustepReader;

// GNUstep's reader of XML compares a few bytes beyond the end of its data: append spaces for it to read.
NSData* WithSlack(NSData* data, std::string_view bytes) {
  constexpr std::string_view kSlack = "                ";
  if (bytes.empty() || bytes.starts_with("bplist")) return data;
  NSMutableData* list = [NSMutableData dataWithData:data];
  [list appendBytes:kSlack.data() length:kSlack.size()];
  return list;
}

id ReadSound(id self, SEL selector, NSData* data, NSPropertyListReadOptions options, NSPropertyListFormat* format,
             NSError** error) {
  const NSData* list = As<NSData>(data);
  const std::string_view bytes(static_cast<const char*>([list bytes]), [list length]);
  if (bytes.empty() || platform::IsSoundPropertyList(bytes)) {
    return gnustepReader(self, selector, WithSlack(data, bytes), options, format, error);
  }
  if (error != nullptr) {
    *error = [NSError errorWithDomain:NSCocoaErrorDomain code:NSFileReadCorruptFileError userInfo:nil];
  }
  return nil;
}

NSString* Escaped(NSString* string) {
  std::u16string characters([string length], u'\0');
  [string getCharacters:reinterpret_cast<unichar*>(characters.data()) range:NSMakeRange(0, characters.size())];
  const auto escaped = platform::EscapedForPropertyList(characters);
  if (!escaped) return string;
  return [NSString stringWithCharacters:reinterpret_cast<const unichar*>(escaped->data()) length:escaped->size()];
}

// The same list with its texts escaped. The writer rejects objects that are no property list.
id EscapedList(id list) {
  if ([list isKindOfClass:[NSString class]]) return Escaped(list);
  if ([list isKindOfClass:[NSArray class]]) {
    NSMutableArray* escaped = [NSMutableArray arrayWithCapacity:[list count]];
    for (id element in static_cast<NSArray*>(list)) [escaped addObject:EscapedList(element)];
    return escaped;
  }
  if ([list isKindOfClass:[NSDictionary class]]) {
    NSMutableDictionary* escaped = [NSMutableDictionary dictionaryWithCapacity:[list count]];
    for (id key in static_cast<NSDictionary*>(list)) {
      [escaped setObject:EscapedList([list objectForKey:key]) forKey:EscapedList(key)];
    }
    return escaped;
  }
  return list;
}

NSData* WriteLossless(id self, SEL selector, id list, NSPropertyListFormat format, NSString** error) {
  if (format != NSPropertyListXMLFormat_v1_0) return gnustepWriter(self, selector, list, format, error);
  NSData* data = gnustepWriter(self, selector, EscapedList(list), format, error);
  if (data == nil) return nil;
  const std::string xml =
      platform::WithSurrogatesJoined({static_cast<const char*>([data bytes]), static_cast<std::size_t>([data length])});
  return [NSData dataWithBytes:xml.data() length:xml.size()];
}

}  // namespace

// GNUstep's writer splits characters outside the basic plane, which its reader can't rejoin, and drops texts with a
// lone surrogate: user defaults would lose every emoji. Its reader takes any list for a sound one.
@interface NSPropertyListSerialization (Completion)
@end

@implementation NSPropertyListSerialization (Completion)

+ (void)load {
  const Class serialization = object_getClass([NSPropertyListSerialization class]);
  gnustepWriter.With(serialization, "dataFromPropertyList:format:errorDescription:", WriteLossless);
  gnustepReader.With(serialization, "propertyListWithData:options:format:error:", ReadSound);
}

@end

// ---- Archives

namespace {

// More than any flat object takes.
constexpr NSUInteger kMostBytes = 16384;

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

// nil for data that are no sound property list.
id PropertyList(NSData* data) {
  if ([data length] > kMostBytes) return nil;
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
