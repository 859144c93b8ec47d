#include "Platform/Updater.h"

#include <algorithm>
#include <compare>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Base/Lifetime.h"
#include "Base/Result.h"
#include "Base/TsLog.h"
#include "Platform/Common/AutoreleaseScope.h"
#include "Platform/Common/UpdateDecision.h"
#include "Platform/Files.h"
#include "Platform/Linux/Base/WallClockTimer.h"
#include "Platform/Linux/Updates/AppImage.h"
#include "Platform/Linux/Updates/Download.h"
#include "Platform/Linux/Updates/UpdateDefaults.h"
#include "Platform/MainQueue.h"
#include "Platform/OperatingSystem.h"
#include "Platform/TaskQueues.h"

namespace tessaro::platform {

namespace {

constexpr char kSystem[] = "linux";
constexpr std::size_t kLongestFeed = 4 * 1024 * 1024;
constexpr std::size_t kLongestFile = 512 * 1024 * 1024;
constexpr auto kProfileInterval = std::chrono::hours(7 * 24);

TimeDefault::Time Now() { return std::chrono::system_clock::now(); }

// Updates an AppImage from a feed: Linux has no updater framework.
class AppcastUpdater final : public Updater {
 public:
  void SetDelegate(UpdaterDelegate& delegate) override {
    delegate_ = &delegate;
    MainQueue::Shared().Post([this] { ReportRelaunch(); });
    ResetUpdateCycle();
  }

  void SetUpdateCheckInterval(std::chrono::seconds interval) override { interval_ = interval; }
  void SetAutomaticallyChecks(bool automatically) override { defaults_.automaticallyChecks.Set(automatically); }

  void ResetUpdateCycle() override {
    if (delegate_ == nullptr || !defaults_.automaticallyChecks.Get()) return timer_.Set(std::nullopt);
    timer_.Set(NextCheck().time_since_epoch());
  }

  bool CheckForUpdates(UpdaterInterface* interface) override { return Check(Kind::User, interface); }
  bool CheckForUpdatesInBackground() override { return Check(Kind::Background, nullptr); }
  bool CheckForUpdateInformation() override { return Check(Kind::Information, nullptr); }
  void Cancel() override {
    ++number_;
    stage_ = Stage::Idle;
    interface_ = nullptr;
    download_.reset();
  }

  // Ends a running check silently, and all automatic ones.
  static constexpr EndStage kEnd = EndStage::Services;
  void Close() noexcept {
    Cancel();
    delegate_ = nullptr;
    timer_.Set(std::nullopt);
  }

 private:
  // In ascending precedence.
  enum class Kind { Information, Background, User };
  enum class Stage { Idle, Fetching, Asking, Installing };

  // An update that is being downloaded and installed.
  struct Installation {
    AppcastItem item;
    UpdateFile file;
    UpdateKey key{};
    std::filesystem::path target;
    std::string bytes;
    Result<void> outcome;  // of the last step
  };
  using SharedInstallation = std::shared_ptr<Installation>;

  void ReportRelaunch() {
    const std::string installed = defaults_.installedVersion.Get();
    if (installed.empty() || std::is_lt(CompareVersions(ReadUpdateInformation().version, installed))) return;
    defaults_.installedVersion.Set({});
    if (delegate_ != nullptr) delegate_->RelaunchedApplication();
  }

  void CheckIfDue() {
    if (NextCheck() > Now() || !CheckForUpdatesInBackground()) ResetUpdateCycle();
  }

  [[nodiscard]] TimeDefault::Time NextCheck() const {
    const auto last = defaults_.lastCheck.Get();
    // If the last check is in the future, the clock has been set back.
    return last && *last <= Now() ? *last + interval_ : Now();
  }

  bool Check(Kind kind, UpdaterInterface* interface) {
    if (delegate_ == nullptr) return false;
    defaults_.lastCheck.Set(Now());
    ResetUpdateCycle();
    if (!MayBegin(kind)) {
      TsLogTextInfo("A check for updates is left out because another one is running");
      if (interface != nullptr) interface->ShowInstalling();
      return false;
    }
    if (stage_ != Stage::Idle) TsLogTextInfo("A check for updates is replaced by a later one");

    Cancel();
    const unsigned number = number_;
    kind_ = kind;
    stage_ = Stage::Fetching;
    interface_ = interface;
    delegate_->WillCheck(kind == Kind::Information);
    Show([](UpdaterInterface& shown) { shown.ShowChecking(); });
    information_ = ReadUpdateInformation();
    if (!IsTrustworthyAddress(information_.feedURL)) {
      MainQueue::Shared().Post([this, number] {
        if (number == number_) FindNothing("The feed's address is missing or not secure: " + information_.feedURL);
      });
      return true;
    }
    channel_ = delegate_->Channel();
    const std::string url = FeedAddress();
    // The script that returns the parameters may have begun another check.
    if (number == number_) Fetch(url, kLongestFeed, [this](auto contents) { ReceiveFeed(std::move(contents)); });
    return true;
  }

  [[nodiscard]] bool MayBegin(Kind kind) const {
    return stage_ == Stage::Idle || (stage_ != Stage::Installing && kind >= kind_);
  }

  [[nodiscard]] UpdateSettings Settings() const {
    const std::string skipped = kind_ == Kind::Background ? defaults_.skippedVersion.Get() : std::string();
    return {information_.version, Version(), channel_, {kSystem, PreferredLanguages()}, skipped};
  }

  [[nodiscard]] std::string FeedAddress() {
    const auto lastProfile = defaults_.lastProfileSubmission.Get();
    const bool sendsProfile =
        defaults_.sendsSystemProfile.Get() && !(lastProfile && Now() - *lastProfile < kProfileInterval);
    if (sendsProfile) defaults_.lastProfileSubmission.Set(Now());
    return WithParameters(information_.feedURL, delegate_->FeedParameters(sendsProfile));
  }

  void ReceiveFeed(Result<std::string> contents) {
    if (!contents) return FindNothing("The feed can't be fetched: " + contents.error().message);
    auto decision = DecideUpdate(*contents, Settings());
    if (!decision) return FindNothing("The feed can't be read: " + decision.error().message);
    Announce(std::move(*decision));
  }

  void Announce(UpdateDecision decision) {
    if (!Notify([&](UpdaterDelegate& delegate) { delegate.FinishedLoadingAppcast(decision.items); })) return;
    if (!decision.update) {
      stage_ = Stage::Idle;
      if (!Notify([](UpdaterDelegate& delegate) { delegate.FoundNoUpdate(); })) return;
      return Show([](UpdaterInterface& interface) { interface.ShowUpToDate(); });
    }
    const auto key = UpdateKeyFrom(information_.publicKey);
    if (!key) return FindNothing("No update can be verified: the public key is missing or malformed");
    const auto installation = std::make_shared<Installation>();
    installation->item = std::move(decision.items[*decision.update]);
    installation->file = std::move(decision.file);
    installation->key = *key;
    stage_ = Stage::Idle;
    if (Notify([&](UpdaterDelegate& delegate) { delegate.FoundUpdate(installation->item); })) Offer(installation);
  }

  void FindNothing(const std::string& reason) {
    stage_ = Stage::Idle;
    TsLogTextWarning(reason);
    if (!Notify([](UpdaterDelegate& delegate) { delegate.FoundNoUpdate(); })) return;
    Show([&](UpdaterInterface& interface) { interface.ShowFailure(reason); });
  }

  void Offer(const SharedInstallation& installation) {
    const bool isAutomatic = kind_ != Kind::Information && defaults_.automaticallyUpdates.Get();
    if (kind_ != Kind::User && !isAutomatic) return;
    if (installed_ && std::is_lteq(CompareVersions(installation->item.version, *installed_))) {
      Show([&](UpdaterInterface& interface) { interface.ShowInstalled(installation->item); });
      return TsLogTextInfo("Update " + installation->item.version + " is installed already, for the next launch");
    }
    installation->target = AppImageOf(information_.bundle);
    if (installation->target.empty()) {
      return Refuse(installation, "the application is not an AppImage, so its package manager updates it");
    }
    if (interface_ != nullptr) return Ask(installation);
    if (isAutomatic) return Install(installation);
    Refuse(installation, "there is no display to ask the user on");
  }

  void Ask(const SharedInstallation& installation) {
    stage_ = Stage::Asking;
    Show([&](UpdaterInterface& interface) {
      interface.ShowUpdate(installation->item, [this, installation, number = number_](UpdaterInterface::Choice choice) {
        if (number == number_ && stage_ == Stage::Asking) Choose(installation, choice);
      });
    });
  }

  void Choose(const SharedInstallation& installation, UpdaterInterface::Choice choice) {
    stage_ = Stage::Idle;
    const bool isSkipped = choice == UpdaterInterface::Choice::Skip;
    if (choice != UpdaterInterface::Choice::Later) {
      defaults_.skippedVersion.Set(isSkipped ? installation->item.version : std::string());
    }
    if (choice == UpdaterInterface::Choice::Install) Install(installation);
  }

  void Install(const SharedInstallation& installation) {
    stage_ = Stage::Installing;
    const auto length = installation->file.length;
    const std::size_t limit = std::min<std::uint64_t>(length.value_or(kLongestFile), kLongestFile);
    Fetch(
        installation->file.url, limit,
        [=, this](Result<std::string> contents) {
          if (!contents) return Refuse(installation, contents.error().message);
          installation->bytes = std::move(*contents);
          Verify(installation);
        },
        [=, this](std::size_t received) {
          Show([&](UpdaterInterface& interface) { interface.ShowProgress(received, length); });
        });
  }

  void Verify(const SharedInstallation& installation) {
    InBackground(
        [installation] {
          const auto& [item, file, key, target, bytes, _] = *installation;
          const bool isSigned = IsSigned(bytes, file.signature, key);
          installation->outcome = isSigned ? CheckNewAppImage(bytes, item.version, target)
                                           : Fail("its file doesn't match the feed's signature");
        },
        [installation, this] {
          if (!installation->outcome) return Refuse(installation, installation->outcome.error().message);
          Replace(installation);
        });
  }

  void Replace(const SharedInstallation& installation) {
    if (!Notify([&](UpdaterDelegate& delegate) { delegate.WillInstallUpdate(installation->item); })) return;
    // Before replacing the file: this process may end before the next step, and the next launch is the new version's.
    defaults_.installedVersion.Set(installation->item.version);
    InBackground([installation] { installation->outcome = ReplaceFile(installation->target, installation->bytes); },
                 [installation, this] { EndReplacement(installation); });
  }

  void EndReplacement(const SharedInstallation& installation) {
    if (!installation->outcome) {
      defaults_.installedVersion.Set({});
      return Refuse(installation, installation->outcome.error().message);
    }
    stage_ = Stage::Idle;
    installed_ = installation->item.version;
    Show([&](UpdaterInterface& interface) { interface.ShowInstalled(installation->item); });
  }

  void Refuse(const SharedInstallation& installation, const std::string& reason) {
    stage_ = Stage::Idle;
    const std::string sentence = "Update " + installation->item.version + " is not installed: " + reason;
    TsLogTextWarning(sentence);
    Show([&](UpdaterInterface& interface) { interface.ShowFailure(sentence); });
  }

  void Fetch(const std::string& url, std::size_t limit, Download::Done done, Download::Progress progress = nullptr) {
    download_ = std::make_unique<Download>(
        url, limit,
        [this, done = std::move(done)](Result<std::string> contents) {
          download_.reset();
          WithAutoreleasePool([&] { done(std::move(contents)); });
        },
        std::move(progress));
  }

  // Calls the delegate. False when the check is not the running one any more.
  [[nodiscard]] bool Notify(const std::function<void(UpdaterDelegate&)>& call) {
    const unsigned number = number_;
    if (delegate_ != nullptr) WithAutoreleasePool([&] { call(*delegate_); });
    return number == number_;
  }

  // Calls the interface, if the check has one.
  void Show(const std::function<void(UpdaterInterface&)>& call) {
    if (interface_ != nullptr) WithAutoreleasePool([&] { call(*interface_); });
  }

  // Does `work` on another thread, and then, if the check is still the running one, the rest on the main thread.
  void InBackground(std::function<void()> work, std::function<void()> rest) {
    BackgroundQueue::Shared().Post([this, number = number_, work = std::move(work), rest = std::move(rest)] {
      work();
      MainQueue::Shared().Post([this, number, rest] {
        if (number == number_) rest();
      });
    });
  }

  UpdateDefaults defaults_;
  UpdaterDelegate* delegate_ = nullptr;
  std::chrono::seconds interval_{0};
  WallClockTimer timer_{[this] { CheckIfDue(); }};

  unsigned number_ = 0;  // of the running check
  Kind kind_ = Kind::Information;
  Stage stage_ = Stage::Idle;
  UpdaterInterface* interface_ = nullptr;
  std::optional<std::string> installed_;  // the version that starts with the next launch
  UpdateInformation information_;
  std::string channel_;
  std::unique_ptr<Download> download_;
};

}  // namespace

Updater& Updater::Shared() {
  static Forever<AppcastUpdater> updater;
  return *updater;
}

}  // namespace tessaro::platform
