#pragma once

#import <AppKit/NSView.h>

#include "Base/Ref.h"

@class NSMutableArray;
@class NSMutableString;

// Stands where the page is. It takes keys and dropped files, and shows what it has received.
@interface WebContentsViewCocoa : NSView {
  Ref<NSMutableString> _typedText;
  Ref<NSMutableArray> _droppedFiles;
}

- (NSString*)typedText;
- (NSArray*)droppedFiles;

@end
