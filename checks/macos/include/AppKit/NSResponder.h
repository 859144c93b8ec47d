#pragma once

#include <AppKit/AppKitDefines.h>

@interface NSResponder : NSObject <NSCoding>
@property(assign) NSResponder* nextResponder;
@property(readonly) BOOL acceptsFirstResponder;
- (BOOL)becomeFirstResponder;
- (BOOL)resignFirstResponder;
- (void)keyDown:(NSEvent*)event;
- (void)keyUp:(NSEvent*)event;
- (void)flagsChanged:(NSEvent*)event;
- (void)mouseDown:(NSEvent*)event;
- (void)mouseDragged:(NSEvent*)event;
- (void)mouseUp:(NSEvent*)event;
- (void)mouseEntered:(NSEvent*)event;
- (void)mouseExited:(NSEvent*)event;
- (void)interpretKeyEvents:(NSArray*)events;
- (BOOL)performKeyEquivalent:(NSEvent*)event;
- (void)cancelOperation:(id)sender;
- (void)insertTab:(id)sender;
- (void)insertBacktab:(id)sender;
@end
