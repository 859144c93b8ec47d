#import <AppKit/AppKit.h>

#include <cmath>
#include <memory>

#include "Base/Ref.h"
#include "Platform/Linux/AppKit/NSWindow+TitlebarAccessories.h"
#include "Platform/Linux/AppKit/SideTable.h"
#include "Platform/Linux/Clipboard/DragSource.h"
#include "Platform/Linux/Clipboard/PasteboardTargets.h"

namespace platform = tessaro::platform;

static const NSSize kIconSize = {16, 16};
static const NSSize kRoom = {28, 22};

// Nobody presses a button without moving the mouse a little.
static const CGFloat kLeastDrag = 3;

@interface NSObject (TsDocumentDrag)
- (BOOL)window:(NSWindow*)window
    shouldDragDocumentWithEvent:(NSEvent*)event
                           from:(NSPoint)point
                 withPasteboard:(NSPasteboard*)pasteboard;
@end

static platform::TargetContents ContentsOf(NSPasteboard* pasteboard) {
  platform::TargetContents contents;
  NSArray* remote = [pasteboard types];
  for (NSUInteger i = 0; i < [remote count]; ++i) {
    NSString* type = [remote objectAtIndex:i];
    if (NSData* data = [pasteboard dataForType:type]) platform::AddTargets(type, data, contents);
  }
  return contents;
}

// The icon of a window's document, which can be dragged to where the document is wanted. GNUstep's own drags offer
// other programs nothing: nobody answers when they ask for the data.
@interface TsDocumentIcon : NSView {
  NSPoint _pressed;
  BOOL _isRefused;
  std::unique_ptr<platform::DragSource> _drag;
}
@end

@implementation TsDocumentIcon

- (BOOL)acceptsFirstMouse:(NSEvent*)event {
  return YES;
}

- (void)drawRect:(NSRect)dirty {
  NSImage* icon = [[NSWorkspace sharedWorkspace] iconForFile:[[self window] representedFilename]];
  const NSSize size = [icon size];
  [icon drawInRect:NSMakeRect((kRoom.width - kIconSize.width) / 2, (kRoom.height - kIconSize.height) / 2,
                              kIconSize.width, kIconSize.height)
          fromRect:NSMakeRect(0, 0, size.width, size.height)
         operation:NSCompositeSourceOver
          fraction:1];
}

- (void)mouseDown:(NSEvent*)event {
  _pressed = [event locationInWindow];
  _isRefused = NO;
}

- (void)mouseDragged:(NSEvent*)event {
  const NSPoint point = [event locationInWindow];
  const bool isDrag = std::hypot(point.x - _pressed.x, point.y - _pressed.y) >= kLeastDrag;
  if (!_drag && !_isRefused && isDrag) [self beginDrag:event];
  if (!_drag) return;
  _drag->Move();
  [_drag->IsWelcome() ? [NSCursor dragCopyCursor] : [NSCursor operationNotAllowedCursor] set];
}

- (void)mouseUp:(NSEvent*)event {
  if (!_drag) return;
  _drag->Drop();
  _drag.reset();
  [[NSCursor arrowCursor] set];
}

// The window's file, unless the delegate has something else in mind.
- (void)beginDrag:(NSEvent*)event {
  NSPasteboard* pasteboard = [NSPasteboard pasteboardWithName:NSDragPboard];
  [pasteboard declareTypes:@[ NSFilenamesPboardType ] owner:nil];
  [pasteboard setPropertyList:@[ [[self window] representedFilename] ] forType:NSFilenamesPboardType];
  id delegate = [[self window] delegate];
  const BOOL asks = [delegate respondsToSelector:@selector(window:shouldDragDocumentWithEvent:from:withPasteboard:)];
  _isRefused = asks && ![delegate window:[self window]
                           shouldDragDocumentWithEvent:event
                                                  from:[self convertPoint:_pressed fromView:nil]
                                        withPasteboard:pasteboard];
  if (!_isRefused) _drag = platform::DragSource::Begin(ContentsOf(pasteboard));
}

@end

// The run time takes a category's method before the class's own.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@interface NSWindow (DocumentIcon)
@end

using Icons = platform::SideTable<NSWindow, Ref<TsDocumentIcon>>;

@implementation NSWindow (DocumentIcon)

// The window manager draws the title bars here, without an icon of the document: it stands with the accessories.
- (void)setRepresentedFilename:(NSString*)path {
  NSString* previous = _representedFilename;
  _representedFilename = [path copy];
  [previous release];
  auto icon = Icons::Shared().Get(self, nullptr);
  if (!icon && [path length] > 0) {
    icon = Adopt([[TsDocumentIcon alloc] initWithFrame:NSMakeRect(0, 0, kRoom.width, kRoom.height)]);
    Icons::Shared().Set(self, icon);
    auto controller = Adopt([[NSTitlebarAccessoryViewController alloc] init]);
    [controller setView:icon];
    [self addTitlebarAccessoryViewController:controller];
  }
  [icon setHidden:[path length] == 0];
  [icon setNeedsDisplay:YES];
}

@end
