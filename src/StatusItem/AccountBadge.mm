#include "StatusItem/AccountBadge.h"

#include "Base/Lifetime.h"
#include "Base/Ref.h"

namespace {

constexpr CGFloat kSize = 16;
constexpr CGFloat kTextHeight = 14.5;
constexpr CGFloat kTextSize = 9;
// Far more badges than one menu shows.
constexpr NSUInteger kMostKept = 256;

NSDictionary* TextAttributes() {
  auto paragraph = Adopt([[NSMutableParagraphStyle alloc] init]);
  [paragraph setAlignment:NSCenterTextAlignment];
  return @{
    NSFontAttributeName : [NSFont menuBarFontOfSize:kTextSize],
    NSParagraphStyleAttributeName : paragraph.get(),
    NSForegroundColorAttributeName : [NSColor whiteColor],
    NSFontWeightTrait : [NSNumber numberWithInt:1],
  };
}

Ref<NSImage> Draw(NSColor* color, NSString* text) {
  auto image = Adopt([[NSImage alloc] initWithSize:NSMakeSize(kSize, kSize)]);
  [image lockFocus];
  [color set];
  [[NSBezierPath bezierPathWithOvalInRect:NSMakeRect(0, 0, kSize, kSize)] fill];
  if (text != nil) [text drawInRect:NSMakeRect(0, 0, kSize, kTextHeight) withAttributes:TextAttributes()];
  [image unlockFocus];
  return image;
}

NSMutableDictionary* DrawnBadges() {
  static Forever<Ref<NSMutableDictionary>> badges(Adopt([[NSMutableDictionary alloc] init]));
  return *badges;
}

}  // namespace

NSImage* AccountBadge(NSColor* color, NSString* text) {
  NSArray* key = [NSArray arrayWithObjects:text != nil ? text : @"", color, nil];
  NSMutableDictionary* badges = DrawnBadges();
  if (NSImage* badge = [badges objectForKey:key]) return badge;
  if ([badges count] == kMostKept) [badges removeAllObjects];
  auto badge = Draw(color, text);
  [badges setObject:badge forKey:key];
  return badge.Autoreleased();
}
