#include "StatusItem/SmallTitle.h"

#include "Base/Lifetime.h"
#include "Base/Ref.h"

namespace {

// Looking up the font costs more than the rest of a row.
NSDictionary* SmallType() {
  static Forever<Ref<NSDictionary>> attributes(
      Retain(@{NSFontAttributeName : [NSFont menuBarFontOfSize:[NSFont smallSystemFontSize]]}));
  return *attributes;
}

}  // namespace

NSAttributedString* SmallTitle(NSString* title) {
  return Adopt([[NSAttributedString alloc] initWithString:title != nil ? title : @"" attributes:SmallType()])
      .Autoreleased();
}
