#pragma once

#include <AppKit/NSLayoutConstraint.h>
#include <AppKit/NSViewController.h>

@interface NSTitlebarAccessoryViewController : NSViewController
@property NSLayoutAttribute layoutAttribute;
@property CGFloat fullScreenMinHeight;
@end
