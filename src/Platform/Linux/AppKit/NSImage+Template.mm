#import "Platform/Linux/AppKit/CocoaAdditions.h"

#include "Platform/Linux/AppKit/SideTable.h"

using TemplateMarks = tessaro::platform::SideTable<NSImage, bool>;

@implementation NSImage (Template)

- (BOOL)isTemplate {
  return TemplateMarks::Shared().Get(self, [[self name] hasSuffix:@"Template"]);
}

- (void)setTemplate:(BOOL)isTemplate {
  TemplateMarks::Shared().Set(self, isTemplate);
}

@end
