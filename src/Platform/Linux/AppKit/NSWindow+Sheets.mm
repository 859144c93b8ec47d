#import "Platform/Linux/AppKit/NSWindow+Sheets.h"

#import <Foundation/Foundation.h>

NSString* const NSWindowDidChangeBackingPropertiesNotification = @"NSWindowDidChangeBackingPropertiesNotification";

@implementation NSWindow (Sheets)

- (NSArray*)sheets {
  NSWindow* sheet = [self attachedSheet];
  return sheet != nil ? [NSArray arrayWithObject:sheet] : [NSArray array];
}

@end
