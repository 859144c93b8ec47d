#import "WebView/TsDraggingInfo.h"

#include "Base/TsLog.h"
#include "Platform/Cocoa.h"

@implementation TsDraggingInfo

- (instancetype)initWithLocation:(NSPoint)location {
  self = [super init];
  if (self == nil) return nil;
  _draggingLocation = location;
  _pasteboard = Retain([NSPasteboard pasteboardWithName:NSDragPboard]);
  return self;
}

- (NSPasteboard*)pasteboard {
  @synchronized(self) {
    return _pasteboard;
  }
}

- (void)setPasteboard:(NSPasteboard*)pasteboard {
  @synchronized(self) {
    _pasteboard = Retain(pasteboard);
  }
}

// A point is two numbers, read and written as one.
- (NSPoint)draggingLocation {
  @synchronized(self) {
    return _draggingLocation;
  }
}

- (void)setDraggingLocation:(NSPoint)location {
  @synchronized(self) {
    _draggingLocation = location;
  }
}

- (NSWindow*)draggingDestinationWindow {
  return nil;
}

- (NSDragOperation)draggingSourceOperationMask {
  return NSDragOperationCopy;
}

- (NSPoint)draggedImageLocation {
  return [self draggingLocation];
}

- (NSImage*)draggedImage {
  return nil;
}

- (NSPasteboard*)draggingPasteboard {
  return [self pasteboard];
}

- (id)draggingSource {
  return self;
}

- (NSInteger)draggingSequenceNumber {
  return 0;
}

- (void)slideDraggedImageTo:(NSPoint)point {
  TsLogDebug(@"slideDraggedImageTo: %@", NSStringFromPoint(point));
}

- (NSArray*)namesOfPromisedFilesDroppedAtDestination:(NSURL*)destination {
  TsLogDebug(@"namesOfPromisedFilesDroppedAtDestination");
  return [NSArray array];
}

- (NSInteger)draggingFormation {
  TsLogDebug(@"draggingFormation");
  return 0;
}

- (void)setDraggingFormation:(NSInteger)formation {
  TsLogDebug(@"setDraggingFormation: %ld", static_cast<long>(formation));
}

- (BOOL)animatesToDestination {
  return NO;
}

- (void)setAnimatesToDestination:(BOOL)animates {
}

- (NSInteger)numberOfValidItemsForDrop {
  return 0;
}

- (void)setNumberOfValidItemsForDrop:(NSInteger)number {
}

// A programmatic drop has no items to enumerate.
- (void)enumerateDraggingItemsWithOptions:(NSUInteger)options
                                  forView:(NSView*)view
                                  classes:(NSArray*)classes
                            searchOptions:(NSDictionary*)searchOptions
                               usingBlock:(__attribute__((noescape))TsDraggingItemBlock)block {
  TsLogDebug(@"enumerateDraggingItemsWithOptions!");
}

- (NSInteger)springLoadingHighlight {
  return 0;
}

- (void)resetSpringLoading {
}

@end
