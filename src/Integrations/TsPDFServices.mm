#import "Integrations/TsPDFServices.h"

@implementation TsPDFServices

+ (instancetype)sharedInstance {
  static TsPDFServices* const instance = [[self alloc] init];
  return instance;
}

- (void)install {
}

@end
