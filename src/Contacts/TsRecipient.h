#pragma once

#import <Foundation/Foundation.h>

// Somebody a message goes to.
@interface TsRecipient : NSObject {
 @private
  NSString* address_;
  NSString* name_;
}

// Never nil; empty when there is none. The address is taken as it is.
@property(nonatomic, copy) NSString* address;
@property(nonatomic, copy) NSString* name;

// A nil name leaves it empty.
+ (TsRecipient*)recipient:(NSString*)address name:(NSString*)name;

@end
