#include "native/DockMenu.h"

#import <AppKit/AppKit.h>

@interface NSObject (DockMenu)
- (NSMenu*)applicationDockMenu:(NSApplication*)sender;
@end

namespace {

NSDictionary* DescribeRow(NSMenuItem* item) {
  if ([item isSeparatorItem]) return @{};
  return @{
    @"title" : [item title],
    @"isOn" : [NSNumber numberWithBool:[item state] == NSOnState],
    @"isEnabled" : [NSNumber numberWithBool:[item isEnabled]],
  };
}

}  // namespace

NSArray* DescribeDockMenu() {
  NSMutableArray* rows = [NSMutableArray array];
  id delegate = [NSApp delegate];
  if (![delegate respondsToSelector:@selector(applicationDockMenu:)]) return rows;
  NSMenu* menu = [delegate applicationDockMenu:NSApp];
  [menu update];
  for (NSMenuItem* item in [menu itemArray]) [rows addObject:DescribeRow(item)];
  return rows;
}
