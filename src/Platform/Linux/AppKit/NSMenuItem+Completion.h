#pragma once

#import <AppKit/NSMenuItem.h>

// GNUstep cannot hide menu items, and keeps only the text of an attributed title. A hidden item stays in its menu, but
// is not shown, and its key equivalent does nothing.
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
