#pragma once

#import <Foundation/Foundation.h>

#include "Base/Ref.h"

@class SBApplication;

// Other applications, and what the user hands to them. Any thread, but for the clipboard.

// Opens a file with the application at a path, and deactivates this one.
void TsOpenWith(NSString* path, NSString* applicationPath);

// A note in Evernote.
@interface TsEvernoteNote : NSObject {
  Ref<SBApplication> _application;
  Ref<NSObject> _delegate;
}

+ (BOOL)isInstalled;

// nil when Evernote can't be scripted.
+ (instancetype)noteWithTitle:(NSString*)title sourceURL:(NSString*)sourceURL;

- (void)appendLink:(NSString*)text url:(NSString*)url;
- (void)appendHtml:(NSString*)html;

// The files of a zip archive are attached one by one.
- (void)appendAttachment:(NSString*)path;

- (void)openNoteWindow;

@end

// A record, or a group of them, in DEVONthink.
@interface TsDEVONthinkRecord : NSObject {
  Ref<SBApplication> _application;
  Ref<NSObject> _delegate;
}

// nil when it isn't installed.
+ (NSString*)installedBundleId;

// nil when nothing could be imported.
+ (instancetype)recordWithTitle:(NSString*)title sourceURL:(NSString*)sourceURL path:(NSString*)path;
+ (instancetype)importFiles:(NSArray*)paths;

- (instancetype)initWithDelegate:(id)delegate application:(SBApplication*)application;
- (void)setWebURL:(NSString*)url;
- (void)openRecordWindow;

@end

// Tasks, by a URL of the application's own scheme.

@interface TsOmnifocus : NSObject
+ (NSString*)installedBundleId;
+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment;
@end

@interface TsTodoist : NSObject
+ (BOOL)isInstalled;
+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment;
@end

@interface TsThings : NSObject
+ (NSString*)installedBundleId;
+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment;
@end

// Takes a mail as a file.
@interface TsReceiptsApp : NSObject
+ (NSString*)installedBundleId;
+ (NSURL*)urlForApplication;
+ (void)importEMLWithPath:(NSString*)path;
@end

// The document viewer, from which the user prints.
@interface TsPreview : NSObject
+ (void)printFile:(NSURL*)url;
@end

@interface TsClipboard : NSObject
// Replaces the contents of the general pasteboard by a text. Main thread only.
+ (void)copy:(NSString*)text;
@end
