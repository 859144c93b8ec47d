#pragma once

#import <AppKit/NSMenuItem.h>

// GNUstep's items can't be hidden, and keep only the text of an attributed title. A hidden item keeps its place in its
// menu, but is not shown, and has no key equivalent.
@interface NSMenuItem (Completion)

- (BOOL)isHidden;
- (void)setHidden:(BOOL)hidden;

- (NSAttributedString*)attributedTitle;
- (void)setAttributedTitle:(NSAttributedString*)title;

@end

namespace tessaro::platform {

// While one exists, items don't look for a shortcut that the user has given to their title. GNUstep searches all user
// defaults for one each time that an item gets a title, which takes as long as the rest of the item.
class WithoutUserShortcuts {
 public:
  WithoutUserShortcuts();
  WithoutUserShortcuts(const WithoutUserShortcuts&) = delete;
  WithoutUserShortcuts& operator=(const WithoutUserShortcuts&) = delete;
  ~WithoutUserShortcuts();
};

}  // namespace tessaro::platform
