#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro::platform {

// A parameter of the feed's address, and how a user would read it. UTF-8.
struct FeedParameter {
  std::string key;
  std::string value;
  std::string displayKey;
  std::string displayValue;
};

// An element of a feed's item: its text, or, if it has none, its attributes and the elements inside it. Names of the
// feed's own vocabulary begin with "sparkle:", whatever prefix the feed has for it.
struct AppcastProperty {
  std::string name;
  std::string text;
  std::vector<AppcastProperty> parts;
};

// The first property of that name; nullptr if missing.
[[nodiscard]] const AppcastProperty* FindProperty(const std::vector<AppcastProperty>& properties,
                                                  std::string_view name) noexcept;

// A version in the feed. Texts are UTF-8, or what the feed took for it. Of elements that a feed has in several
// languages or for several systems, an item has the user's and this system's.
struct AppcastItem {
  std::string version;  // the one that is compared; empty where the item names none
  std::vector<AppcastProperty> properties;
};

// Receives the events of checks. Every call comes on the main thread; none of them may destroy the updater.
//
// A check first requests its channel and its parameters. Later, from the event loop, come the feed's items if it could
// be read, and exactly one of FoundUpdate() and FoundNoUpdate(), unless another check has replaced this one.
class UpdaterDelegate {
 public:
  virtual ~UpdaterDelegate() = default;

  // Whether the updater may ask the user for permission to check automatically.
  [[nodiscard]] virtual bool ShouldPromptForPermission() = 0;

  // A check begins; `onlyInformation` for one that only fetches the feed.
  virtual void WillCheck(bool onlyInformation) = 0;

  // Items of a channel are only for users who name it.
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
};

// Shows a check that the user has requested, for updaters without an interface of their own. Main thread; no call may
// destroy the updater.
class UpdaterInterface {
 public:
  enum class Choice { Install, Skip, Later };
  using Choose = std::function<void(Choice)>;

  virtual ~UpdaterInterface() = default;

  virtual void ShowChecking() = 0;
  // The check is skipped because an update is being installed.
  virtual void ShowInstalling() = 0;
  virtual void ShowUpToDate() = 0;
  // Calls `choose` later, at most once.
  virtual void ShowUpdate(const AppcastItem& item, Choose choose) = 0;
  virtual void ShowProgress(std::uint64_t received, std::optional<std::uint64_t> total) = 0;
  // The next launch is the new version's.
  virtual void ShowInstalled(const AppcastItem& item) = 0;
  virtual void ShowFailure(std::string_view reason) = 0;
};

// Looks for newer versions of the application in a feed, an appcast, and installs those with a valid signature. The
// application's information dictionary names the feed (SUFeedURL), the key of the signatures (SUPublicEDKey, base64 of
// an Ed25519 key) and the version that runs (CFBundleVersion). Settings are kept in the user defaults. Failures are
// logged.
//
// One check runs at a time. A new check replaces one that waits for its feed, unless the new one would do less, and is
// skipped while an update is being installed or offered to the user; both are logged. Main thread only. Nothing blocks,
// and nothing keeps the process alive.
class Updater {
 public:
  static Updater& Shared();

  // Begins the work: reports the first launch of a new version, and makes the checks that are due. The delegate is
  // never destroyed. Settings are made before.
  virtual void SetDelegate(UpdaterDelegate& delegate) = 0;

  // How much time passes between two automatic checks.
  virtual void SetUpdateCheckInterval(std::chrono::seconds interval) = 0;
  // Remembered beyond the process. It counts from the next ResetUpdateCycle().
  virtual void SetAutomaticallyChecks(bool automatically) = 0;
  // Counts the interval again from the last check.
  virtual void ResetUpdateCycle() = 0;

  // Each of these is false when the check is skipped.
  //
  // On the user's request. Without an interface, an update is installed as by a check in the background.
  virtual bool CheckForUpdates(UpdaterInterface* interface) = 0;
  // Installs an update if the user default SUAutomaticallyUpdate says so, and the user has not skipped it.
  virtual bool CheckForUpdatesInBackground() = 0;
  // Only fetches the feed.
  virtual bool CheckForUpdateInformation() = 0;

  // Ends the running check without another call to the delegate and the interface.
  virtual void Cancel() = 0;

 protected:
  virtual ~Updater() = default;
};

}  // namespace tessaro::platform
