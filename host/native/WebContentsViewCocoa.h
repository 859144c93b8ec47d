#pragma once

#import <AppKit/NSView.h>

#include "Base/Ref.h"

@class NSMutableArray;
@class NSMutableString;

// Stands in for the page: accepts keys and dropped files, and shows them.
@interface WebContentsViewCocoa : NSView {
  Ref<NSMutableString> _typedText;
  Ref<NSMutableArray> _droppedFiles;
}

- (NSString*)typedText;
- (NSArray*)droppedFiles;

@end
