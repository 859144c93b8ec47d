#pragma once

#import <Foundation/Foundation.h>

#include "Base/Ref.h"

@class SBApplication;

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
