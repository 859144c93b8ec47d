#pragma once

#import <Foundation/Foundation.h>

#include "Base/Ref.h"

@class SBApplication;

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
