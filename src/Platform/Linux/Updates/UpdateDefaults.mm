#include "Platform/Linux/Updates/UpdateDefaults.h"

#import <Foundation/Foundation.h>

#include "Base/Ref.h"
#include "Base/TsString.h"

namespace tessaro::platform {

namespace {

NSString* const kFeedURL = @"SUFeedURL";
NSString* const kPublicKey = @"SUPublicEDKey";

NSString* const kAutomaticallyChecks = @"SUEnableAutomaticChecks";
NSString* const kAutomaticallyUpdates = @"SUAutomaticallyUpdate";
NSString* const kLastCheck = @"SULastCheckTime";
NSString* const kSendsProfile = @"SUSendProfileInfo";
NSString* const kLastProfileSubmission = @"SULastProfileSubmissionDate";
NSString* const kInstalledVersion = @"SUInstalledVersion";
NSString* const kSkippedVersion = @"SUSkippedVersion";

NSUserDefaults* Defaults() { return [NSUserDefaults standardUserDefaults]; }

std::string InformationText(NSString* key) {
  return TsStdString(As<NSString>([[NSBundle mainBundle] objectForInfoDictionaryKey:key]));
}

std::optional<UpdateDefaults::Time> TimeFor(NSString* key) {
  NSDate* date = As<NSDate>([Defaults() objectForKey:key]);
  if (date == nil) return std::nullopt;
  return std::chrono::system_clock::from_time_t(static_cast<time_t>([date timeIntervalSince1970]));
}

// A feed may call a version anything, even bytes that are no text.
void SetVersion(NSString* key, const std::string& version) {
  NSString* text = [NSString stringWithUTF8String:version.c_str()];
  if ([text length] == 0) {
    [Defaults() removeObjectForKey:key];
  } else {
    [Defaults() setObject:text forKey:key];
  }
  [Defaults() synchronize];
}

void SetTime(NSString* key, UpdateDefaults::Time time) {
  const auto seconds = static_cast<NSTimeInterval>(std::chrono::system_clock::to_time_t(time));
  [Defaults() setObject:[NSDate dateWithTimeIntervalSince1970:seconds] forKey:key];
}

}  // namespace

UpdateInformation ReadUpdateInformation() {
  return {InformationText(kFeedURL), InformationText(kPublicKey), InformationText(@"CFBundleVersion"),
          TsStdString([[NSBundle mainBundle] bundlePath])};
}

std::vector<std::string> PreferredLanguages() {
  std::vector<std::string> languages;
  for (NSString* language in [NSLocale preferredLanguages]) languages.push_back(TsStdString(language));
  return languages;
}

bool UpdateDefaults::AutomaticallyChecks() const { return [Defaults() boolForKey:kAutomaticallyChecks]; }

void UpdateDefaults::SetAutomaticallyChecks(bool automatically) {
  [Defaults() setBool:automatically forKey:kAutomaticallyChecks];
}

bool UpdateDefaults::AutomaticallyUpdates() const { return [Defaults() boolForKey:kAutomaticallyUpdates]; }

std::optional<UpdateDefaults::Time> UpdateDefaults::LastCheck() const { return TimeFor(kLastCheck); }

void UpdateDefaults::SetLastCheck(Time time) {
  SetTime(kLastCheck, time);
  // Otherwise a process that ends soon would check again at its next launch.
  [Defaults() synchronize];
}

bool UpdateDefaults::SendsSystemProfile() const { return [Defaults() boolForKey:kSendsProfile]; }

std::optional<UpdateDefaults::Time> UpdateDefaults::LastProfileSubmission() const {
  return TimeFor(kLastProfileSubmission);
}

void UpdateDefaults::SetLastProfileSubmission(Time time) { SetTime(kLastProfileSubmission, time); }

std::string UpdateDefaults::SkippedVersion() const { return TsStdString([Defaults() stringForKey:kSkippedVersion]); }

void UpdateDefaults::SetSkippedVersion(const std::string& version) { SetVersion(kSkippedVersion, version); }

std::string UpdateDefaults::InstalledVersion() const {
  return TsStdString([Defaults() stringForKey:kInstalledVersion]);
}

void UpdateDefaults::SetInstalledVersion(const std::string& version) { SetVersion(kInstalledVersion, version); }

}  // namespace tessaro::platform
