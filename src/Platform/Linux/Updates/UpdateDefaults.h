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

class UpdateDefaults {
 public:
  using Time = std::chrono::system_clock::time_point;

  [[nodiscard]] bool AutomaticallyChecks() const;
  void SetAutomaticallyChecks(bool automatically);

  [[nodiscard]] bool AutomaticallyUpdates() const;

  [[nodiscard]] std::optional<Time> LastCheck() const;
  void SetLastCheck(Time time);

  [[nodiscard]] bool SendsSystemProfile() const;
  [[nodiscard]] std::optional<Time> LastProfileSubmission() const;
  void SetLastProfileSubmission(Time time);

  // The version that the user does not want to be offered in the background; empty for none.
  [[nodiscard]] std::string SkippedVersion() const;
  void SetSkippedVersion(const std::string& version);

  // The version that was installed and has not been started yet; empty for none. It is on the disk as soon as it is
  // set.
  [[nodiscard]] std::string InstalledVersion() const;
  void SetInstalledVersion(const std::string& version);
};

}  // namespace tessaro::platform
