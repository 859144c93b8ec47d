#import "native/AtomApplication.h"

#import <AppKit/AppKit.h>
#include <uv.h>

#include "native/DraggedFiles.h"

static const NSUInteger kMostKeyArrivals = 512;

static NSString* OrEmpty(NSString* text) { return text != nil ? text : @""; }

@implementation AtomApplication

- (instancetype)init {
  self = [super init];
  if (self) _keyArrivals = Adopt([[NSMutableArray alloc] init]);
  return self;
}

- (NSArray*)keyArrivals {
  return [NSArray arrayWithArray:_keyArrivals];
}

- (void)sendEvent:(NSEvent*)event {
  if ([event type] == NSKeyDown) [self noteKeyArrival:event];
  if ([event type] == NSAppKitDefined && ![self admitDraggingEvent:event]) return;
  [super sendEvent:event];
}

- (void)noteKeyArrival:(NSEvent*)event {
  if ([_keyArrivals count] == kMostKeyArrivals) [_keyArrivals removeObjectAtIndex:0];
  [_keyArrivals addObject:@{
    @"characters" : OrEmpty([event characters]),
    @"keyCode" : @([event keyCode]),
    @"modifiers" : @([event modifierFlags]),
    @"arrival" : @(static_cast<double>(uv_hrtime())),
    @"serverTime" : @([event timestamp] * 1000),
  }];
}

// GNUstep announces files dragged from other applications, but never fetches them to its drag pasteboard, so that no
// view would accept them. And when it reads the entering and the first move at once, it announces them in reverse
// order: the entering, which comes too late then, would end the drag.
- (BOOL)admitDraggingEvent:(NSEvent*)event {
  const BOOL wasDragging = _isDragging;
  switch ([event subtype]) {
    case GSAppKitDraggingEnter:
      _isDragging = YES;
      [self putDraggedFilesOnPasteboard];
      return !wasDragging;
    case GSAppKitDraggingUpdate:
      _isDragging = YES;
      if (!wasDragging) [self putDraggedFilesOnPasteboard];
      return YES;
    case GSAppKitDraggingExit:
    case GSAppKitDraggingDrop:
      _isDragging = NO;
      return YES;
    default:
      return YES;
  }
}

- (void)putDraggedFilesOnPasteboard {
  NSMutableArray* paths = [NSMutableArray array];
  for (const std::string& path : FetchDraggedFiles()) {
    [paths addObject:[[NSFileManager defaultManager] stringWithFileSystemRepresentation:path.data()
                                                                                 length:path.size()]];
  }
  if ([paths count] == 0) return;
  NSPasteboard* pasteboard = [NSPasteboard pasteboardWithName:NSDragPboard];
  [pasteboard declareTypes:@[ NSFilenamesPboardType ] owner:nil];
  [pasteboard setPropertyList:paths forType:NSFilenamesPboardType];
}

@end
