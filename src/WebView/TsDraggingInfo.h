#pragma once

#import <AppKit/NSDragging.h>

#include "Base/Ref.h"

@class NSPasteboard;

// What a view is told about a drag that no hand makes: it comes from nowhere, to a point, as a copy.
@interface TsDraggingInfo : NSObject <NSDraggingInfo> {
  Ref<NSPasteboard> _pasteboard;
  NSPoint _draggingLocation;
}

// Takes the system's drag pasteboard.
- (instancetype)initWithLocation:(NSPoint)location;

@property(retain) NSPasteboard* pasteboard;
@property NSPoint draggingLocation;

// What Cocoa asks and GNUstep doesn't.
- (NSInteger)draggingFormation;
- (void)setDraggingFormation:(NSInteger)formation;
- (BOOL)animatesToDestination;
- (void)setAnimatesToDestination:(BOOL)animates;
- (NSInteger)numberOfValidItemsForDrop;
- (void)setNumberOfValidItemsForDrop:(NSInteger)number;
- (NSInteger)springLoadingHighlight;
- (void)resetSpringLoading;

@end
