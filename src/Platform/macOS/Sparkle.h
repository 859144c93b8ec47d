#pragma once

#import <Foundation/Foundation.h>

// The messages of Sparkle's updater that are used: its framework belongs to the host and is found by name.
@class SUUpdater, SUAppcast, SUAppcastItem;

@protocol TsSparkleDelegate <NSObject>
- (BOOL)updaterShouldPromptForPermissionToCheckForUpdates:(SUUpdater*)updater;
- (NSArray*)feedParametersForUpdater:(SUUpdater*)updater sendingSystemProfile:(BOOL)sendingProfile;
- (NSSet*)allowedChannelsForUpdater:(SUUpdater*)updater;
- (void)updater:(SUUpdater*)updater didFinishLoadingAppcast:(SUAppcast*)appcast;
- (void)updater:(SUUpdater*)updater didFindValidUpdate:(SUAppcastItem*)item;
- (void)updaterDidNotFindUpdate:(SUUpdater*)updater;
- (void)updater:(SUUpdater*)updater willInstallUpdate:(SUAppcastItem*)item;
- (void)updaterDidRelaunchApplication:(SUUpdater*)updater;
- (void)updater:(SUUpdater*)updater didAbortWithError:(NSError*)error;
@end

@interface NSObject (TsSparkleUpdater)
+ (SUUpdater*)sharedUpdater;
- (void)setDelegate:(id)delegate;
- (void)setUpdateCheckInterval:(NSTimeInterval)interval;
- (void)setAutomaticallyChecksForUpdates:(BOOL)automatically;
- (void)resetUpdateCycle;
- (void)checkForUpdates:(id)sender;
- (void)checkForUpdatesInBackground;
- (void)checkForUpdateInformation;
@end

@interface NSObject (TsSparkleAppcast)
- (NSArray*)items;
- (NSString*)versionString;
- (NSDictionary*)propertiesDictionary;
@end
