#pragma once

#import <Foundation/Foundation.h>

#include "Base/Ref.h"

@class MASShortcut;

// Records the user's shortcuts for commands of the application in the standard user defaults, and binds them: pressed
// in any application, a shortcut announces its defaults key. One recording at a time. Main thread only.
//
// Posts "TsKeyboardShortcutMonitorUpdated" with the state of the recording and "TsGlobalShortcutAction" with the
// "defaults-key" whose shortcut was pressed; the object is the shared instance.
@interface TsGlobalShortcut : NSObject {
  Ref<NSObject> _eventMonitor;
  Ref<NSString> _defaultsKey;
  Ref<NSObject> _savedShortcutData;
}

+ (instancetype)sharedInstance;

// Absent unless a recording is running.
- (id)eventMonitor;

// The defaults key being recorded; after an accepted shortcut it stays until the next stop.
- (NSString*)defaultsKey;

// The shortcut stored under the key when the recording began.
- (id)savedShortcutData;

- (void)startMonitoringKeyboardEvents:(NSString*)key;

// Ends the recording and restores the earlier shortcut.
- (void)stopMonitoringKeyboardEvents;

// Stops watching key presses.
- (void)stopMonitoring;

- (void)bindDefaultsKey:(NSString*)key;

// nil when no shortcut is stored under the key.
- (NSString*)shortcutDescriptionForDefaultsKey:(NSString*)key;

- (void)postNotificationWith:(MASShortcut*)shortcut error:(NSString*)explanation;
- (void)postNotificationWithUserInfo:(NSDictionary*)userInfo;

@end
