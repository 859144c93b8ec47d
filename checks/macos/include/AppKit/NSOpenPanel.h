#pragma once

#include <AppKit/NSWindow.h>

@interface NSSavePanel : NSPanel
+ (NSSavePanel*)savePanel;
@property(readonly, copy) NSURL* URL;
@property(copy) NSURL* directoryURL;
@property(copy) NSArray* allowedFileTypes API_DEPRECATED("", macos(10.3, 12.0));
@property BOOL allowsOtherFileTypes;
@property(strong) NSView* accessoryView;
@property BOOL showsHiddenFiles;
@property BOOL canCreateDirectories;
@property(copy) NSString* prompt;
@property(copy) NSString* message;
@property(copy) NSString* nameFieldStringValue;
- (void)beginSheetModalForWindow:(NSWindow*)window completionHandler:(void (^)(NSModalResponse result))handler;
- (void)cancel:(id)sender;
@end
@interface NSOpenPanel : NSSavePanel
+ (NSOpenPanel*)openPanel;
@property(readonly, copy) NSArray* URLs;
@property BOOL canChooseFiles;
@property BOOL canChooseDirectories;
@property BOOL allowsMultipleSelection;
- (void)setAccessoryViewDisclosed:(BOOL)disclosed;
@end
