#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

// What the updater knows of the application, and what it keeps in its user defaults. Main thread, with an autorelease
// pool.
namespace tessaro::platform {

struct UpdateInformation {
  std::string feedURL;
  std::string publicKey;
  std::string version;
  std::filesystem::path bundle;
};

// Of the main bundle; texts that it doesn't have are empty.
[[nodiscard]] UpdateInformation ReadUpdateInformation();

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

  // The version that was installed and has not been started yet; empty when there is none. It outlives the process as
  // soon as it is set.
  [[nodiscard]] std::string InstalledVersion() const;
  void SetInstalledVersion(const std::string& version);
};

}  // namespace tessaro::platform
