#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <string>

#include "Platform/Common/PropertyListText.h"

namespace platform = tessaro::platform;

namespace {

using Writer = NSData* (*)(id, SEL, id, NSPropertyListFormat, NSString**);

Writer gnustepWriter = nullptr;

NSString* Escaped(NSString* string) {
  std::u16string characters([string length], u'\0');
  [string getCharacters:reinterpret_cast<unichar*>(characters.data()) range:NSMakeRange(0, characters.size())];
  const auto escaped = platform::EscapedForPropertyList(characters);
  if (!escaped) return string;
  return [NSString stringWithCharacters:reinterpret_cast<const unichar*>(escaped->data()) length:escaped->size()];
}

// The same list with its texts escaped. What is no property list is left for the writer to refuse.
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

// GNUstep's writer splits characters outside the basic plane in a way its reader can't mend, and a text with a lone
// surrogate vanishes: user defaults would lose every emoji.
@interface NSPropertyListSerialization (LosslessXML)
@end

@implementation NSPropertyListSerialization (LosslessXML)

+ (void)load {
  const Method method = class_getClassMethod([NSPropertyListSerialization class],
                                             @selector(dataFromPropertyList:format:errorDescription:));
  gnustepWriter = reinterpret_cast<Writer>(method_setImplementation(method, reinterpret_cast<IMP>(WriteLossless)));
}

@end
