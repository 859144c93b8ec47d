#import "Contacts/TsRecipient.h"

#include "Utilities/Ref.h"

@implementation TsRecipient

@synthesize address = address_;
@synthesize name = name_;

+ (TsRecipient*)recipient:(NSString*)address name:(NSString*)name {
  Ref<TsRecipient> recipient = Adopt([[TsRecipient alloc] init]);
  [recipient setAddress:address];
  if (name != nil) [recipient setName:name];
  return recipient.Autoreleased();
}

- (instancetype)init {
  if ((self = [super init]) != nil) {
    address_ = @"";
    name_ = @"";
  }
  return self;
}

- (void)dealloc {
  [address_ release];
  [name_ release];
  [super dealloc];
}

@end
