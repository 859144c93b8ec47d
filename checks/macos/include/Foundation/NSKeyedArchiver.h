#pragma once

#include <Foundation/NSObject.h>

@interface NSCoder : NSObject
- (void)encodeObject:(id)object forKey:(NSString*)key;
- (void)encodeInteger:(NSInteger)value forKey:(NSString*)key;
- (id)decodeObjectForKey:(NSString*)key;
- (id)decodeObjectOfClass:(Class)cls forKey:(NSString*)key;
- (NSInteger)decodeIntegerForKey:(NSString*)key;
- (BOOL)containsValueForKey:(NSString*)key;
@property(readonly) BOOL allowsKeyedCoding;
@end

@interface NSKeyedArchiver : NSCoder
+ (NSData*)archivedDataWithRootObject:(id)object API_DEPRECATED("", macos(10.2, 10.14));
+ (NSData*)archivedDataWithRootObject:(id)object requiringSecureCoding:(BOOL)secure error:(NSError**)error;
@end

@interface NSKeyedUnarchiver : NSCoder
+ (id)unarchiveObjectWithData:(NSData*)data API_DEPRECATED("", macos(10.2, 10.14));
+ (id)unarchivedObjectOfClass:(Class)cls fromData:(NSData*)data error:(NSError**)error;
@end
