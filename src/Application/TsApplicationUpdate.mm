#include "Application/TsApplicationUpdate.h"

#include <utility>

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Extensions/NSApplication+TsBundle.h"
#include "Extensions/NSEvent+TsKeyboard.h"
#include "Platform/WindowServer.h"
#include "Updates/TsUpdateWindow.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsNotificationObserver.h"

namespace platform = tessaro::platform;

NSString* const TsReceivedAppcastNotification = @"TsReceivedAppcastNotification";
NSString* const TsApplicationDidRelaunchAfterUpdateNotification = @"TsApplicationDidRelaunchAfterUpdateNotification";

namespace {

constexpr std::chrono::hours kCheckInterval(12);

NSString* const kStable = @"stable";
NSString* const kTest = @"test";

NSDictionary* Parameter(NSString* key, NSString* displayKey, NSString* value) {
  NSString* text = TsOrEmpty(value);
  return @{@"key" : key, @"value" : text, @"displayKey" : displayKey, @"displayValue" : text};
}

NSString* SelectedLanguage() {
  NSArray* languages = [NSLocale preferredLanguages];
  return [languages count] > 0 ? [languages objectAtIndex:0] : @"None";
}

// Empty for values of other types.
std::string TextFor(NSDictionary* dictionary, NSString* key) {
  return TsStdString(As<NSString>([dictionary objectForKey:key]));
}

std::vector<platform::FeedParameter> FeedParameters(NSArray* dictionaries) {
  std::vector<platform::FeedParameter> parameters;
  for (id each in dictionaries) {
    NSDictionary* given = As<NSDictionary>(each);
    platform::FeedParameter parameter{TextFor(given, @"key"), TextFor(given, @"value"), TextFor(given, @"displayKey"),
                                      TextFor(given, @"displayValue")};
    if (!parameter.key.empty()) parameters.push_back(std::move(parameter));
  }
  return parameters;
}

NSDictionary* Dictionary(const std::vector<platform::AppcastProperty>& properties);

id Value(const platform::AppcastProperty& property) {
  return property.parts.empty() ? static_cast<id>(TsNSString(property.text)) : Dictionary(property.parts);
}

// Elements with the same name become an array.
NSDictionary* Dictionary(const std::vector<platform::AppcastProperty>& properties) {
  NSMutableDictionary* dictionary = [NSMutableDictionary dictionaryWithCapacity:properties.size()];
  for (const auto& property : properties) {
    NSString* name = TsNSString(property.name);
    const id known = [dictionary objectForKey:name];
    if (NSMutableArray* several = As<NSMutableArray>(known)) {
      [several addObject:Value(property)];
    } else {
      const id value = Value(property);
      [dictionary setObject:known == nil ? value : [NSMutableArray arrayWithObjects:known, value, nil] forKey:name];
    }
  }
  return dictionary;
}

bool HoldsOption() { return ([NSEvent modifierFlags] & kTsOption) != 0; }

// Forwards the updater's questions and reports to the controller.
class ControllerDelegate final : public platform::UpdaterDelegate {
 public:
  explicit ControllerDelegate(TsApplicationUpdate* controller) : controller_(controller) {}

  [[nodiscard]] bool ShouldPromptForPermission() override {
    return [controller_ updaterShouldPromptForPermissionToCheckForUpdates:updater_];
  }
  void WillCheck(bool onlyInformation) override {
    [controller_ updater:updater_ willCheckForInformationOnly:onlyInformation];
  }
  [[nodiscard]] std::string Channel() override { return TsStdString([controller_ buildType]); }
  [[nodiscard]] std::vector<platform::FeedParameter> FeedParameters(bool sendingSystemProfile) override {
    return ::FeedParameters([controller_ feedParametersForUpdater:updater_ sendingSystemProfile:sendingSystemProfile]);
  }
  void FinishedLoadingAppcast(const std::vector<platform::AppcastItem>& items) override {
    [controller_ updater:updater_ didFinishLoadingAppcast:items];
  }
  void FoundUpdate(const platform::AppcastItem& item) override {
    [controller_ updater:updater_ didFindValidUpdate:item];
  }
  void FoundNoUpdate() override { [controller_ updaterDidNotFindUpdate:updater_]; }
  void WillInstallUpdate(const platform::AppcastItem& item) override {
    [controller_ updater:updater_ willInstallUpdate:item];
  }
  void RelaunchedApplication() override { [controller_ updaterDidRelaunchApplication:updater_]; }

 private:
  platform::Updater& updater_ = platform::Updater::Shared();
  TsApplicationUpdate* controller_;
};

}  // namespace

@implementation TsApplicationUpdate

@synthesize dryRun = _dryRun;

+ (TsApplicationUpdate*)sharedInstance {
  static Forever<Ref<TsApplicationUpdate>> shared(Adopt([[TsApplicationUpdate alloc] init]));
  return shared->get();
}

- (instancetype)init {
  self = [super init];
  if (self == nil) return nil;
  [self setBuildType:kStable];
  _delegate = std::make_unique<ControllerDelegate>(self);
  platform::Updater& updater = platform::Updater::Shared();
  updater.SetUpdateCheckInterval(kCheckInterval);
  updater.SetDelegate(*_delegate);
  return self;
}

TS_COPIED(NSString, buildType, BuildType)

- (void)setParameterCallback:(TsFeedParameterBlock)callback {
  _parameterCallback = std::move(callback);
}

- (void)checkForUpdates {
  if (HoldsOption()) [self setBuildType:kTest];
  auto* interface = platform::IsWindowServerAvailable() ? [[TsUpdateWindow sharedInstance] interface] : nullptr;
  const bool hasBegun = platform::Updater::Shared().CheckForUpdates(interface);
  // The channel is for this check only.
  if (!hasBegun) [self setBuildType:kStable];
}

- (void)checkForUpdatesInBackground:(BOOL)automatically {
  platform::Updater& updater = platform::Updater::Shared();
  updater.SetAutomaticallyChecks(automatically);
  updater.ResetUpdateCycle();
  updater.CheckForUpdatesInBackground();
}

- (void)fetchAppcast {
  platform::Updater::Shared().CheckForUpdateInformation();
}

- (void)resetLastProfileSubmissionDate {
  [[NSUserDefaults standardUserDefaults] removeObjectForKey:@"SULastProfileSubmissionDate"];
}

- (BOOL)updaterShouldPromptForPermissionToCheckForUpdates:(platform::Updater&)updater {
  return NO;
}

- (void)updater:(platform::Updater&)updater willCheckForInformationOnly:(BOOL)onlyInformation {
  [self setDryRun:onlyInformation];
}

- (NSArray*)feedParametersForUpdater:(platform::Updater&)updater sendingSystemProfile:(BOOL)sendingProfile {
  TsLogInfo(@"Check for updates. (buildType=%@, sendingProfile=%@)", [self buildType], sendingProfile ? @"YES" : @"NO");
  NSMutableArray* parameters = [NSMutableArray array];
  if (_parameterCallback) [parameters addObjectsFromArray:_parameterCallback(sendingProfile)];
  [parameters addObject:Parameter(@"osVersion", @"macOS Version", [NSApplication ts_osVersion])];
  [parameters addObject:Parameter(@"appVersion", @"Application Version", [NSApplication ts_bundleVersion])];
  [parameters
      addObject:Parameter(@"shortVersionString", @"Application Version String", [NSApplication ts_shortVersionString])];
  [parameters addObject:Parameter(@"selectedLanguage", @"Selected Language", SelectedLanguage())];
  if (![[self buildType] isEqualToString:kStable]) {
    [parameters addObject:Parameter(@"buildType", @"Build Type", [self buildType])];
    [self setBuildType:kStable];
  }
  return parameters;
}

- (void)updater:(platform::Updater&)updater didFinishLoadingAppcast:(const std::vector<platform::AppcastItem>&)items {
  NSMutableArray* appcast = [NSMutableArray arrayWithCapacity:items.size()];
  for (const auto& item : items) [appcast addObject:Dictionary(item.properties)];
  TsPost(TsReceivedAppcastNotification, self, @{@"appcast" : appcast});
}

- (void)updater:(platform::Updater&)updater didFindValidUpdate:(const platform::AppcastItem&)item {
  TsLogInfo(@"Did find update %@.", TsNSString(item.version));
  if (![self dryRun] && platform::IsWindowServerAvailable()) [NSApp activateIgnoringOtherApps:YES];
  [self setDryRun:NO];
}

- (void)updaterDidNotFindUpdate:(platform::Updater&)updater {
  [self setDryRun:NO];
}

- (void)updater:(platform::Updater&)updater willInstallUpdate:(const platform::AppcastItem&)item {
  TsLogInfo(@"Will install update %@.", TsNSString(item.version));
}

- (void)updaterDidRelaunchApplication:(platform::Updater&)updater {
  TsPost(TsApplicationDidRelaunchAfterUpdateNotification, [NSValue valueWithPointer:&updater]);
}

@end

NSArray* TsFeedParametersFromScript(BOOL sendingSystemProfile) {
  NSString* json = TsCallback(TsSlot::AppcastParameter).CallForText({sendingSystemProfile != NO});
  if (json == nil) {
    TsLogWarning(@"Couldn't get parameters from callback because result wasn't a string");
    return @[];
  }
  NSError* error = nil;
  NSArray* parameters = As<NSArray>(TsConvertFromJSONString(json, &error));
  if (parameters != nil) return parameters;
  TsLogWarning(@"Couldn't get parameters from callback because of %@", error);
  return @[];
}
