#pragma once

#import <Foundation/NSKeyedArchiver.h>

@class NSError;

// GNUstep's unarchiver trusts an archive: it makes objects of whatever classes it names, and follows references out of
// its bounds.
@interface NSKeyedUnarchiver (Class)

// nil, with an error, unless the archive is that of one object of `expected` whose values are no objects of their own.
+ (id)unarchivedObjectOfClass:(Class)expected fromData:(NSData*)data error:(NSError**)error;

@end
