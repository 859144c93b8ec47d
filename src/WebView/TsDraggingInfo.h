#pragma once

#import <AppKit/NSDragging.h>

#include "Base/Ref.h"

@class NSPasteboard;

// The dragging information of a programmatic drop: a copy to a point, without a source window.
@interface TsDraggingInfo : NSObject <NSDraggingInfo> {
  Ref<NSPasteboard> _pasteboard;
  NSPoint _draggingLocation;
}

// With the system's drag pasteboard.
- (instancetype)initWithLocation:(NSPoint)location;

@property(retain) NSPasteboard* pasteboard;
@property NSPoint draggingLocation;

// Methods of Cocoa's protocol that GNUstep lacks.
- (NSInteger)draggingFormation;
- (void)setDraggingFormation:(NSInteger)formation;
- (BOOL)animatesToDestination;
- (void)setAnimatesToDestination:(BOOL)animates;
- (NSInteger)numberOfValidItemsForDrop;
- (void)setNumberOfValidItemsForDrop:(NSInteger)number;
- (NSInteger)springLoadingHighlight;
- (void)resetSpringLoading;

@end
