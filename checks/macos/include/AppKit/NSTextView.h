#pragma once

#include <AppKit/NSControl.h>

APPKIT_EXTERN NSNotificationName const NSTextDidChangeNotification;

@interface NSText : NSView
@property(copy) NSString* string;
@property(getter=isEditable) BOOL editable;
@property(getter=isSelectable) BOOL selectable;
@property(getter=isRichText) BOOL richText;
@property(getter=isVerticallyResizable) BOOL verticallyResizable;
@property(getter=isHorizontallyResizable) BOOL horizontallyResizable;
@property NSSize maxSize;
@property NSSize minSize;
@property(strong) NSFont* font;
@property(assign) id delegate;
@end
@interface NSTextContainer : NSObject
@property BOOL widthTracksTextView;
@property NSSize containerSize;
@end
@interface NSTextView : NSText
@property(assign) NSTextContainer* textContainer;
@property BOOL allowsUndo;
@property(readonly) BOOL hasMarkedText;
@end

@interface NSProgressIndicator : NSView
@property(getter=isIndeterminate) BOOL indeterminate;
@property double doubleValue;
- (void)startAnimation:(id)sender;
- (void)stopAnimation:(id)sender;
@end

@interface NSScrollView : NSView
@property(readonly) NSSize contentSize;
@property NSBorderType borderType;
@property(strong) NSView* documentView;
@property BOOL hasVerticalScroller;
@property BOOL hasHorizontalScroller;
@property BOOL autohidesScrollers;
@end
