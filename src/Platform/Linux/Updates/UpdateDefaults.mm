#include "Platform/Linux/Updates/UpdateDefaults.h"

#import <Foundation/Foundation.h>

#include "Base/Ref.h"
#include "Base/TsString.h"

namespace tessaro::platform {

namespace {

std::string InformationText(NSString* key) {
  return TsStdString(As<NSString>([[NSBundle mainBundle] objectForInfoDictionaryKey:key]));
}

id ObjectFor(const char* key) { return [[NSUserDefaults standardUserDefaults] objectForKey:TsNSString(key)]; }

void SetObject(id object, const char* key) {
  NSUserDefaults* defaults = [NSUserDefaults standardUserDefaults];
  object != nil ? [defaults setObject:object forKey:TsNSString(key)] : [defaults removeObjectForKey:TsNSString(key)];
  [defaults synchronize];
}

}  // namespace

UpdateInformation ReadUpdateInformation() {
  return {InformationText(@"SUFeedURL"), InformationText(@"SUPublicEDKey"), InformationText(@"CFBundleVersion"),
          TsStdString([[NSBundle mainBundle] bundlePath])};
}

std::vector<std::string> PreferredLanguages() {
  std::vector<std::string> languages;
  for (NSString* language in [NSLocale preferredLanguages]) languages.push_back(TsStdString(language));
  return languages;
}

bool FlagDefault::Get() const { return [[NSUserDefaults standardUserDefaults] boolForKey:TsNSString(key)]; }

void FlagDefault::Set(bool value) const {
  [[NSUserDefaults standardUserDefaults] setBool:value forKey:TsNSString(key)];
}

std::optional<TimeDefault::Time> TimeDefault::Get() const {
  NSDate* date = As<NSDate>(ObjectFor(key));
  if (date == nil) return std::nullopt;
  return std::chrono::system_clock::from_time_t(static_cast<time_t>([date timeIntervalSince1970]));
}

void TimeDefault::Set(Time time) const {
  const auto seconds = static_cast<NSTimeInterval>(std::chrono::system_clock::to_time_t(time));
  SetObject([NSDate dateWithTimeIntervalSince1970:seconds], key);
}

std::string VersionDefault::Get() const { return TsStdString(As<NSString>(ObjectFor(key))); }

// A feed's version may be any bytes, not only UTF-8.
void VersionDefault::Set(const std::string& version) const {
  NSString* text = [NSString stringWithUTF8String:version.c_str()];
  SetObject([text length] > 0 ? text : nil, key);
}

}  // namespace tessaro::platform
