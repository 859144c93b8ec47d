#import "Keychain/TsTransientKeychain.h"

#include "Base/Lifetime.h"

@implementation TsTransientKeychain

+ (TsTransientKeychain*)sharedInstance {
  static Forever<Ref<TsTransientKeychain>> keychain(Adopt([[TsTransientKeychain alloc] init]));
  return *keychain;
}

- (instancetype)init {
  if ((self = [super init]) != nil) _passwordsByAccount = Adopt([[NSMutableDictionary alloc] init]);
  return self;
}

- (NSMutableDictionary*)passwordsByAccount {
  return _passwordsByAccount;
}

- (void)setPassword:(NSString*)password forAccount:(NSString*)account {
  if (password != nil) {
    [_passwordsByAccount setObject:password forKey:account];
  } else {
    [_passwordsByAccount removeObjectForKey:account];
  }
}

- (NSString*)passwordForAccount:(NSString*)account {
  return [_passwordsByAccount objectForKey:account];
}

@end
