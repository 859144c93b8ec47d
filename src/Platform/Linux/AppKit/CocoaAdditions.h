#pragma once

#import <AppKit/AppKit.h>
#import <AppKit/NSLayoutConstraint.h>
#import <AppKit/NSTitlebarAccessoryViewController.h>

#include <functional>

// The parts of Cocoa that the shared sources use and GNUstep lacks.

// GNUstep has no event monitors. Like Cocoa's, these get each event before the application's sendEvent:, the latest
// monitor first, and return the event, a replacement, or nil to stop the event.
@interface NSEvent (Completion)

// The caller does not own the monitor. `handler` must not throw C++ exceptions.
+ (id)addLocalMonitorForEventsMatchingMask:(NSUInteger)mask handler:(std::function<NSEvent*(NSEvent*)>)handler;
+ (void)removeMonitor:(id)monitor;

@end

// Template images are shapes, drawn in the colour of their surroundings. As on a Mac, an image whose name ends with
// "Template" is a template by default.
@interface NSImage (Template)

- (BOOL)isTemplate;
- (void)setTemplate:(BOOL)isTemplate;

@end

// GNUstep's unarchiver trusts archives: it instantiates any class that an archive names, and follows references out of
// bounds.
@interface NSKeyedUnarchiver (Class)

// nil, with an error, unless the archive holds exactly one object of `expected`, without references to other objects.
+ (id)unarchivedObjectOfClass:(Class)expected fromData:(NSData*)data error:(NSError**)error;

@end

@interface NSMenu (Completion)

- (void)removeAllItems;

// Shows the menu with its upper left corner at a point of the view, and tracks the mouse until the menu closes. Ignores
// `item`. Always NO: GNUstep does not report whether the user chose an item.
- (BOOL)popUpMenuPositioningItem:(NSMenuItem*)item atLocation:(NSPoint)location inView:(NSView*)view;

@end

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

// GNUstep's pasteboards hold types, not items.
@interface NSPasteboard (Items)

// One item for each file, of type "public.file-url". The first item, or the only one without files, offers all types.
- (NSArray*)pasteboardItems;

- (NSInteger)clearContents;

// Declares the types of all items and sets their data; the first item with a type wins. Files are written as one list
// of file names.
- (BOOL)writeObjects:(NSArray*)items;

@end

// Only macOS has this item; toolbars leave it out.
extern "C" NSString* const NSToolbarCloudSharingItemIdentifier;

// GNUstep declares no such protocol, but calls its methods.
@protocol NSToolbarDelegate <NSObject>
@end

// GNUstep has no extension items. The flag is only stored.
@interface NSToolbar (Completion)

- (BOOL)allowsExtensionItems;
- (void)setAllowsExtensionItems:(BOOL)allows;

@end

// GNUstep never posts this notification.
extern "C" NSString* const NSWindowDidChangeBackingPropertiesNotification;

// GNUstep does not call these methods.
@interface NSViewController (Appearance)

- (void)viewDidAppear;
- (void)viewDidDisappear;

@end

@interface NSTitlebarAccessoryViewController (Layout)

// Ignored: accessories stand at the right end.
- (void)setLayoutAttribute:(NSLayoutAttribute)attribute;

@end

@interface NSWindow (Completion)

// GNUstep attaches one sheet at most.
- (NSArray*)sheets;

// Ignored: GNUstep's windows have no tabs.
+ (void)setAllowsAutomaticWindowTabbing:(BOOL)allows;

// The window manager draws the title bars here, so accessories stand in the row below: at the end of the toolbar, and
// over the upper right corner of the content while the window shows no toolbar.
- (NSArray*)titlebarAccessoryViewControllers;
- (void)addTitlebarAccessoryViewController:(NSTitlebarAccessoryViewController*)controller;

@end
