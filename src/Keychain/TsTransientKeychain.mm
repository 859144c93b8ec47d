#import "Keychain/TsTransientKeychain.h"

#include "Utilities/Ref.h"

@implementation TsTransientKeychain

@synthesize passwordsByAccount = passwordsByAccount_;

+ (TsTransientKeychain*)sharedInstance {
  static const Ref<TsTransientKeychain> keychain = Adopt([[TsTransientKeychain alloc] init]);
  return keychain;
}

- (instancetype)init {
  if ((self = [super init]) != nil) passwordsByAccount_ = [[NSMutableDictionary alloc] init];
  return self;
}

- (void)dealloc {
  [passwordsByAccount_ release];
  [super dealloc];
}

- (void)setPassword:(NSString*)password forAccount:(NSString*)account {
  if (password != nil) {
    [passwordsByAccount_ setObject:password forKey:account];
  } else {
    [passwordsByAccount_ removeObjectForKey:account];
  }
}

- (NSString*)passwordForAccount:(NSString*)account {
  return [passwordsByAccount_ objectForKey:account];
}

@end
