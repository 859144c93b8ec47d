#pragma once

#import <AppKit/NSTitlebarAccessoryViewController.h>
#import <AppKit/NSWindow.h>

#include "Base/Ref.h"

@class NSMutableArray;

// Keeps the accessories of one window in their place.
@interface TsTitlebarAccessories : NSObject {
  NSWindow* _window;
  Ref<NSMutableArray> _controllers;
}
- (instancetype)initWithWindow:(NSWindow*)window;
- (NSArray*)controllers;
- (void)add:(NSTitlebarAccessoryViewController*)controller;
@end
