#include "Platform/Updater.h"

#include <utility>

#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/MainQueue.h"
#include "Platform/macOS/Guarded.h"
#include "Platform/macOS/Sparkle.h"

// The host's Sparkle framework, found by name: without it there are no updates, and every check says so. It shows its
// own windows, and asks the user for permission. Main thread only.
@interface TsSparkleClient : NSObject <TsSparkleDelegate> {
  tessaro::platform::UpdaterDelegate* _delegate;
}
- (instancetype)initWithDelegate:(tessaro::platform::UpdaterDelegate&)delegate;
@end

namespace tessaro::platform {

namespace {

// An element without attributes is a text; one with attributes a dictionary of them.
AppcastProperty PropertyOf(NSString* name, id value) {
  AppcastProperty property;
  property.name = TsStdString(name);
  if (![value isKindOfClass:[NSDictionary class]]) {
    property.text = TsStdString([value description]);
    return property;
  }
  for (NSString* key in value) {
    property.parts.push_back({TsStdString(key), TsStdString([[value objectForKey:key] description]), {}});
  }
  return property;
}

AppcastItem ItemOf(id item) {
  AppcastItem made;
  made.version = TsStdString([item versionString]);
  NSDictionary* properties = [item propertiesDictionary];
  for (NSString* name in properties) made.properties.push_back(PropertyOf(name, [properties objectForKey:name]));
  return made;
}

NSDictionary* DictionaryOf(const FeedParameter& parameter) {
  return @{
    @"key" : TsNSString(parameter.key),
    @"value" : TsNSString(parameter.value),
    @"displayKey" : TsNSString(parameter.displayKey),
    @"displayValue" : TsNSString(parameter.displayValue)
  };
}

class SparkleUpdater final : public Updater {
 public:
  SparkleUpdater() : updater_([NSClassFromString(@"SUUpdater") sharedUpdater]) {
    if (updater_ == nil) TsLogInfo(@"The host has no Sparkle framework: there are no updates");
  }

  void SetDelegate(UpdaterDelegate& delegate) override {
    delegate_ = &delegate;
    client_ = Adopt([[TsSparkleClient alloc] initWithDelegate:delegate]);
    [updater_ setDelegate:client_.get()];
  }
  void SetUpdateCheckInterval(std::chrono::seconds interval) override {
    [updater_ setUpdateCheckInterval:static_cast<NSTimeInterval>(interval.count())];
  }
  void SetAutomaticallyChecks(bool automatically) override {
    [updater_ setAutomaticallyChecksForUpdates:automatically];
  }
  void ResetUpdateCycle() override { [updater_ resetUpdateCycle]; }

  // Sparkle has an interface of its own, which cancels as well.
  bool CheckForUpdates(UpdaterInterface*) override {
    if (Begin(false)) [updater_ checkForUpdates:nil];
    return true;
  }
  bool CheckForUpdatesInBackground() override {
    if (Begin(false)) [updater_ checkForUpdatesInBackground];
    return true;
  }
  bool CheckForUpdateInformation() override {
    if (Begin(true)) [updater_ checkForUpdateInformation];
    return true;
  }
  void Cancel() override {}

 private:
  // False without Sparkle: then nothing is found.
  [[nodiscard]] bool Begin(bool onlyInformation) {
    if (delegate_ != nullptr) delegate_->WillCheck(onlyInformation);
    if (updater_ != nil) return true;
    MainQueue::Shared().Post([this] {
      if (delegate_ != nullptr) delegate_->FoundNoUpdate();
    });
    return false;
  }

  const id updater_;
  UpdaterDelegate* delegate_ = nullptr;
  Ref<TsSparkleClient> client_;
};

}  // namespace

Updater& Updater::Shared() {
  [[clang::no_destroy]] static SparkleUpdater updater;
  return updater;
}

}  // namespace tessaro::platform

@implementation TsSparkleClient

- (instancetype)initWithDelegate:(tessaro::platform::UpdaterDelegate&)delegate {
  self = [super init];
  if (self != nil) _delegate = &delegate;
  return self;
}

- (BOOL)updaterShouldPromptForPermissionToCheckForUpdates:(SUUpdater*)updater {
  return _delegate->ShouldPromptForPermission();
}

- (NSArray*)feedParametersForUpdater:(SUUpdater*)updater sendingSystemProfile:(BOOL)sendingProfile {
  NSMutableArray* parameters = [NSMutableArray array];
  for (const auto& parameter : _delegate->FeedParameters(sendingProfile)) {
    [parameters addObject:tessaro::platform::DictionaryOf(parameter)];
  }
  return parameters;
}

- (NSSet*)allowedChannelsForUpdater:(SUUpdater*)updater {
  const std::string channel = _delegate->Channel();
  return channel.empty() ? [NSSet set] : [NSSet setWithObject:TsNSString(channel)];
}

- (void)updater:(SUUpdater*)updater didFinishLoadingAppcast:(SUAppcast*)appcast {
  std::vector<tessaro::platform::AppcastItem> items;
  for (id item in [static_cast<id>(appcast) items]) items.push_back(tessaro::platform::ItemOf(item));
  _delegate->FinishedLoadingAppcast(items);
}

- (void)updater:(SUUpdater*)updater didFindValidUpdate:(SUAppcastItem*)item {
  _delegate->FoundUpdate(tessaro::platform::ItemOf(item));
}

- (void)updaterDidNotFindUpdate:(SUUpdater*)updater {
  _delegate->FoundNoUpdate();
}

- (void)updater:(SUUpdater*)updater willInstallUpdate:(SUAppcastItem*)item {
  _delegate->WillInstallUpdate(tessaro::platform::ItemOf(item));
}

- (void)updaterDidRelaunchApplication:(SUUpdater*)updater {
  _delegate->RelaunchedApplication();
}

- (void)updater:(SUUpdater*)updater didAbortWithError:(NSError*)error {
  TsLogTextWarning(tessaro::platform::ReasonOf(error));
}

@end
