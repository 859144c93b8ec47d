#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <memory>
#include <vector>

#include "Base/Ref.h"
#include "Platform/Updater.h"

// The feed's items have arrived: {"appcast": an array of dictionaries}. Its object is the shared update controller.
extern NSString* const TsReceivedAppcastNotification;

// This process is the first one of a version that the updater has installed.
extern NSString* const TsApplicationDidRelaunchAfterUpdateNotification;

// Returns further parameters for a request of the feed: dictionaries of "key", "value", "displayKey" and
// "displayValue".
using TsFeedParameterBlock = std::function<NSArray*(BOOL sendingSystemProfile)>;

// Configures the updater, gives the parameters of each feed request, and posts the updater's results. Main thread only.
@interface TsApplicationUpdate : NSObject {
 @private
  std::unique_ptr<tessaro::platform::UpdaterDelegate> _delegate;
  Ref<NSString> _buildType;
  TsFeedParameterBlock _parameterCallback;
  BOOL _dryRun;
}

// Made on first use; automatic checks begin with it.
+ (TsApplicationUpdate*)sharedInstance;

// The update channel: "stable". A check with the Option key held uses "test" for its request of the feed.
@property(nonatomic, copy) NSString* buildType;

- (void)setParameterCallback:(TsFeedParameterBlock)callback;

// Whether the running check only fetches the feed: then an update does not bring the application to the front.
@property(nonatomic, assign) BOOL dryRun;

// A check on the user's request: on a display, the update window shows it.
- (void)checkForUpdates;
- (void)checkForUpdatesInBackground:(BOOL)automatically;
- (void)fetchAppcast;

// The next check sends the system profile again.
- (void)resetLastProfileSubmissionDate;

// Called by the updater.
- (void)updater:(tessaro::platform::Updater&)updater willCheckForInformationOnly:(BOOL)onlyInformation;
- (BOOL)updaterShouldPromptForPermissionToCheckForUpdates:(tessaro::platform::Updater&)updater;
- (NSArray*)feedParametersForUpdater:(tessaro::platform::Updater&)updater sendingSystemProfile:(BOOL)sendingProfile;
- (void)updater:(tessaro::platform::Updater&)updater
    didFinishLoadingAppcast:(const std::vector<tessaro::platform::AppcastItem>&)items;
- (void)updater:(tessaro::platform::Updater&)updater didFindValidUpdate:(const tessaro::platform::AppcastItem&)item;
- (void)updaterDidNotFindUpdate:(tessaro::platform::Updater&)updater;
- (void)updater:(tessaro::platform::Updater&)updater willInstallUpdate:(const tessaro::platform::AppcastItem&)item;
- (void)updaterDidRelaunchApplication:(tessaro::platform::Updater&)updater;

@end

// The parameters that script's callback gives; none, with a warning, when its result is malformed.
[[nodiscard]] NSArray* TsFeedParametersFromScript(BOOL sendingSystemProfile);
