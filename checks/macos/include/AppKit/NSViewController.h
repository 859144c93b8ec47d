#pragma once

#include <AppKit/NSView.h>

@interface NSViewController : NSResponder
@property(strong) NSView* view;
- (void)loadView;
- (void)viewDidLoad;
- (void)viewWillAppear;
- (void)viewDidAppear;
- (void)viewDidDisappear;
@end
