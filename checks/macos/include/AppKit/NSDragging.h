#pragma once

#include <AppKit/NSPasteboard.h>

using NSDragOperation = NSUInteger;
enum : NSDragOperation {
  NSDragOperationNone = 0,
  NSDragOperationCopy = 1,
  NSDragOperationLink = 2,
  NSDragOperationGeneric = 4,
  NSDragOperationMove = 16,
};
enum NSDraggingFormation : NSInteger { NSDraggingFormationDefault = 0 };
enum NSSpringLoadingHighlight : NSInteger { NSSpringLoadingHighlightNone = 0 };
using NSDraggingItemEnumerationOptions = NSUInteger;
@class NSDraggingItem;

@protocol NSDraggingInfo <NSObject>
@property(readonly, strong) NSWindow* draggingDestinationWindow;
@property(readonly) NSDragOperation draggingSourceOperationMask;
@property(readonly) NSPoint draggingLocation;
@property(readonly) NSPoint draggedImageLocation;
@property(readonly, strong) NSImage* draggedImage API_DEPRECATED("", macos(10.0, 11.0));
@property(readonly, strong) NSPasteboard* draggingPasteboard;
@property(readonly, strong) id draggingSource;
@property(readonly) NSInteger draggingSequenceNumber;
- (void)slideDraggedImageTo:(NSPoint)point;
@property NSDraggingFormation draggingFormation;
@property BOOL animatesToDestination;
@property NSInteger numberOfValidItemsForDrop;
- (void)enumerateDraggingItemsWithOptions:(NSDraggingItemEnumerationOptions)options
                                  forView:(NSView*)view
                                  classes:(NSArray*)classes
                            searchOptions:(NSDictionary*)searchOptions
                               usingBlock:(void(NS_NOESCAPE ^)(NSDraggingItem* item, NSInteger index, BOOL* stop))block;
@property(readonly) NSSpringLoadingHighlight springLoadingHighlight;
- (void)resetSpringLoading;
@end

@interface NSObject (NSDraggingDestination)
- (NSDragOperation)draggingEntered:(id<NSDraggingInfo>)sender;
- (NSDragOperation)draggingUpdated:(id<NSDraggingInfo>)sender;
- (void)draggingExited:(id<NSDraggingInfo>)sender;
- (BOOL)prepareForDragOperation:(id<NSDraggingInfo>)sender;
- (BOOL)performDragOperation:(id<NSDraggingInfo>)sender;
- (void)concludeDragOperation:(id<NSDraggingInfo>)sender;
- (void)draggingEnded:(id<NSDraggingInfo>)sender;
- (NSArray*)namesOfPromisedFilesDroppedAtDestination:(NSURL*)destination API_DEPRECATED("", macos(10.2, 10.13));
@end
