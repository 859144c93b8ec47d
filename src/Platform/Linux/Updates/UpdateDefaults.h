#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// The updater's facts about the application and the user, and its settings in the user defaults. Main thread, with an
// autorelease pool.
namespace tessaro::platform {

struct UpdateInformation {
  std::string feedURL;
  std::string publicKey;
  std::string version;
  std::filesystem::path bundle;
};

// From the main bundle; missing texts are empty.
[[nodiscard]] UpdateInformation ReadUpdateInformation();

// The user's languages, the preferred one first.
[[nodiscard]] std::vector<std::string> PreferredLanguages();

// Values in the user defaults. Times and versions are on the disk as soon as they are set: a process that ends soon
// after a check must not check again at its next launch.
struct FlagDefault {
  const char* key;

  [[nodiscard]] bool Get() const;
  void Set(bool value) const;
};

struct TimeDefault {
  using Time = std::chrono::system_clock::time_point;
  const char* key;

  [[nodiscard]] std::optional<Time> Get() const;
  void Set(Time time) const;
};

struct VersionDefault {
  const char* key;

  // Empty for none.
  [[nodiscard]] std::string Get() const;
  void Set(const std::string& version) const;
};

struct UpdateDefaults {
  FlagDefault automaticallyChecks{"SUEnableAutomaticChecks"};
  FlagDefault automaticallyUpdates{"SUAutomaticallyUpdate"};
  FlagDefault sendsSystemProfile{"SUSendProfileInfo"};
  TimeDefault lastCheck{"SULastCheckTime"};
  TimeDefault lastProfileSubmission{"SULastProfileSubmissionDate"};
  VersionDefault skippedVersion{"SUSkippedVersion"};      // not to be offered in the background
  VersionDefault installedVersion{"SUInstalledVersion"};  // not started yet
};

}  // namespace tessaro::platform
