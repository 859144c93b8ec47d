#include "StatusItem/SmallTitle.h"

#include "Base/Ref.h"

namespace {

// Asked for again and again, the font would cost more than all the rest of a row.
NSDictionary* SmallType() {
  static auto& attributes =
      *new Ref<NSDictionary>(Retain(@{NSFontAttributeName : [NSFont menuBarFontOfSize:[NSFont smallSystemFontSize]]}));
  return attributes;
}

}  // namespace

NSAttributedString* SmallTitle(NSString* title) {
  return Adopt([[NSAttributedString alloc] initWithString:title != nil ? title : @"" attributes:SmallType()])
      .Autoreleased();
}
