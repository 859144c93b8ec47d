#import "Platform/Linux/AppKit/NSToolbar+Extensions.h"

#import <Foundation/NSString.h>

#include "Platform/Linux/AppKit/SideTable.h"

NSString* const NSToolbarCloudSharingItemIdentifier = @"NSToolbarCloudSharingItem";

using ExtensionMarks = tessaro::platform::SideTable<NSToolbar, bool>;

@implementation NSToolbar (Extensions)

- (BOOL)allowsExtensionItems {
  return ExtensionMarks::Shared().Get(self, false);
}

- (void)setAllowsExtensionItems:(BOOL)allows {
  ExtensionMarks::Shared().Set(self, allows);
}

@end
