#pragma once

#import <Foundation/NSKeyedArchiver.h>

@class NSError;

// GNUstep's unarchiver trusts archives: it instantiates any class that an archive names, and follows references out of
// bounds.
@interface NSKeyedUnarchiver (Class)

// nil, with an error, unless the archive holds exactly one object of `expected`, without references to other objects.
+ (id)unarchivedObjectOfClass:(Class)expected fromData:(NSData*)data error:(NSError**)error;

@end
