#import "Migration/TsSignature.h"

@implementation TsSignature

@dynamic email, name, useByDefault;

- (TsAccount*)account {
  return [self objectIn:"account"];
}

@end
