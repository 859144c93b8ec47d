#include "StatusItem/SmallTitle.h"

#include "Utilities/Ref.h"

NSAttributedString* SmallTitle(NSString* title) {
  NSFont* font = [NSFont menuBarFontOfSize:[NSFont smallSystemFontSize]];
  return Adopt([[NSAttributedString alloc] initWithString:title != nil ? title : @""
                                               attributes:@{NSFontAttributeName : font}])
      .Autoreleased();
}
