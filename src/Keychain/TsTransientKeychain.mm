#import "Keychain/TsTransientKeychain.h"

@implementation TsTransientKeychain

+ (TsTransientKeychain*)sharedInstance {
  static const Ref<TsTransientKeychain> keychain = Adopt([[TsTransientKeychain alloc] init]);
  return keychain;
}

- (instancetype)init {
  if ((self = [super init]) != nil) passwordsByAccount_ = Adopt([[NSMutableDictionary alloc] init]);
  return self;
}

- (NSMutableDictionary*)passwordsByAccount {
  return passwordsByAccount_;
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
