#import "Integrations/TsClipboard.h"

#include "Platform/Cocoa.h"

@implementation TsClipboard

+ (void)copy:(NSString*)text {
  NSLog(@">>> copy to pasteboard %@", text);
  NSPasteboard* pasteboard = [NSPasteboard generalPasteboard];
  [pasteboard declareTypes:@[ NSStringPboardType ] owner:nil];
  [pasteboard setString:text forType:NSStringPboardType];
}

@end
