// deprecated: NSGeneralPboard
#import <AppKit/AppKit.h>

NSString* Old() { return NSGeneralPboard; }
