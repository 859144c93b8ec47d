#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro::platform {

// What is added to the address of every request for the feed, and what a person is shown of it. UTF-8.
struct FeedParameter {
  std::string key;
  std::string value;
  std::string displayKey;
  std::string displayValue;
};

// What an element of a feed's item says: its text, or, where it has none, its attributes. Names that belong to the
// feed's own vocabulary begin with "sparkle:", whatever prefix the feed itself has for it.
struct AppcastProperty {
  std::string name;
  std::string text;
  std::vector<AppcastProperty> attributes;
};

// A version that the feed knows. Texts are UTF-8, or what the feed took for it.
struct AppcastItem {
  std::string version;  // the one that is compared; empty where the item names none
  std::vector<AppcastProperty> properties;
};

// Hears what becomes of a check. Every call comes on the main thread; none of them may destroy the updater.
//
// A check asks for its channel and its parameters before it begins. Then come, from the event loop, the feed's items
// where it could be read, and exactly one of found and not found, unless another check has taken the place of this one.
class UpdaterDelegate {
 public:
  virtual ~UpdaterDelegate() = default;

  // Whether an updater that would like to may ask the user if it shall look for updates by itself.
  [[nodiscard]] virtual bool ShouldPromptForPermission() = 0;

  // Items that belong to a channel are for those only who name it.
  [[nodiscard]] virtual std::string Channel() = 0;
  [[nodiscard]] virtual std::vector<FeedParameter> FeedParameters(bool sendingSystemProfile) = 0;

  virtual void FinishedLoadingAppcast(const std::vector<AppcastItem>& items) = 0;
  virtual void FoundUpdate(const AppcastItem& item) = 0;
  // Also when the feed could not be read.
  virtual void FoundNoUpdate() = 0;

  // The update's file has been verified.
  virtual void WillInstallUpdate(const AppcastItem& item) = 0;
  // This process is the first one of a version that was installed by the updater.
  virtual void RelaunchedApplication() = 0;

  // Why the feed could not be read, or why an update was found and not installed. For the log.
  virtual void Failed(std::string_view reason) = 0;
};

// Looks for newer versions of the application in a feed, an appcast, and installs what has the right signature. The
// application's information dictionary names the feed (SUFeedURL), the key of the signatures (SUPublicEDKey, base64 of
// an Ed25519 key) and the version that runs (CFBundleVersion). Settings are kept in the user defaults.
//
// There is one check at a time: a later one takes the place of one that still waits for its feed, unless it would do
// less than that; while an update is on its way it is left out. Main thread only. Nothing blocks, and nothing keeps the
// process alive.
class Updater {
 public:
  static Updater& Shared();

  // Begins the work: the delegate, which must outlive the process's work, hears of a new version at once, and checks
  // that are due are made. Settings are made before.
  virtual void SetDelegate(UpdaterDelegate& delegate) = 0;

  // How much time passes between two automatic checks.
  virtual void SetUpdateCheckInterval(std::chrono::seconds interval) = 0;
  // Remembered beyond the process. It counts from the next ResetUpdateCycle().
  virtual void SetAutomaticallyChecks(bool automatically) = 0;
  // Counts the interval again from the last check.
  virtual void ResetUpdateCycle() = 0;

  // The user has asked: what is found is installed.
  virtual void CheckForUpdates() = 0;
  // What is found is installed where the user default SUAutomaticallyUpdate says so.
  virtual void CheckForUpdatesInBackground() = 0;
  // What is found is told, and nothing else.
  virtual void CheckForUpdateInformation() = 0;

 protected:
  virtual ~Updater() = default;
};

}  // namespace tessaro::platform
