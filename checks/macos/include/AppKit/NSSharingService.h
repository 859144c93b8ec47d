#pragma once

#include <AppKit/NSView.h>

@class NSSharingServicePicker, NSSharingService;
@protocol NSSharingServicePickerDelegate <NSObject>
@optional
- (void)sharingServicePicker:(NSSharingServicePicker*)picker didChooseSharingService:(NSSharingService*)service;
@end
@interface NSSharingServicePicker : NSObject
- (instancetype)initWithItems:(NSArray*)items;
@property(assign) id<NSSharingServicePickerDelegate> delegate;
- (void)showRelativeToRect:(NSRect)rect ofView:(NSView*)view preferredEdge:(NSRectEdge)edge;
@end
