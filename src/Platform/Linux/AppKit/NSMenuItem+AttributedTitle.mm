#import <AppKit/NSMenuItem.h>
#import <Foundation/NSAttributedString.h>

#include "Base/Ref.h"
#include "Platform/Linux/AppKit/SideTable.h"

using AttributedTitles = tessaro::platform::SideTable<NSMenuItem, Ref<NSAttributedString>>;

// GNUstep keeps only the text of an attributed title. The run time takes a category's method before the class's own.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@interface NSMenuItem (AttributedTitle)
@end

@implementation NSMenuItem (AttributedTitle)

- (NSAttributedString*)attributedTitle {
  return AttributedTitles::Shared().Get(self, nullptr).Autoreleased();
}

- (void)setAttributedTitle:(NSAttributedString*)title {
  AttributedTitles::Shared().Set(self, Adopt(static_cast<NSAttributedString*>([title copy])));
  [self setTitle:[title string]];
}

@end
