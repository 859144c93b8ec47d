#include "Platform/Linux/Updates/AppcastUpdater.h"

#include <algorithm>
#include <compare>
#include <utility>

#include "Platform/BackgroundQueue.h"
#include "Platform/Common/AutoreleaseScope.h"
#include "Platform/Common/UpdateAddress.h"
#include "Platform/Common/VersionOrder.h"
#include "Platform/FileWriting.h"
#include "Platform/Linux/Updates/AppImage.h"
#include "Platform/MainQueue.h"
#include "Platform/OperatingSystem.h"

namespace tessaro::platform {

namespace {

constexpr std::size_t kLongestFeed = 4 * 1024 * 1024;
constexpr std::size_t kLongestFile = 512 * 1024 * 1024;
constexpr auto kProfileInterval = std::chrono::hours(7 * 24);

UpdateDefaults::Time Now() { return std::chrono::system_clock::now(); }

}  // namespace

Updater& Updater::Shared() {
  static Forever<AppcastUpdater> updater;
  return *updater;
}

AppcastUpdater::AppcastUpdater() : timer_([this] { CheckIfDue(); }) {}

void AppcastUpdater::SetDelegate(UpdaterDelegate& delegate) {
  delegate_ = &delegate;
  MainQueue::Shared().Post([this] { TellOfRelaunch(); });
  ResetUpdateCycle();
}

void AppcastUpdater::Close() noexcept {
  ++number_;
  delegate_ = nullptr;
  timer_.Set(std::nullopt);
  download_.reset();
}

void AppcastUpdater::TellOfRelaunch() {
  const std::string installed = defaults_.InstalledVersion();
  if (installed.empty() || std::is_lt(CompareVersions(ReadUpdateInformation().version, installed))) return;
  defaults_.SetInstalledVersion({});
  if (delegate_ != nullptr) delegate_->RelaunchedApplication();
}

// ---- Automatic checks

void AppcastUpdater::SetAutomaticallyChecks(bool automatically) { defaults_.SetAutomaticallyChecks(automatically); }

void AppcastUpdater::ResetUpdateCycle() {
  if (delegate_ == nullptr || !defaults_.AutomaticallyChecks()) return timer_.Set(std::nullopt);
  timer_.Set(NextCheck().time_since_epoch());
}

UpdateDefaults::Time AppcastUpdater::NextCheck() const {
  const auto last = defaults_.LastCheck();
  // A check that lies ahead was made before somebody set the clock back.
  return last && *last <= Now() ? *last + interval_ : Now();
}

void AppcastUpdater::CheckIfDue() {
  if (NextCheck() <= Now()) return CheckForUpdatesInBackground();
  ResetUpdateCycle();
}

// ---- A check

void AppcastUpdater::Check(Kind kind) {
  if (delegate_ == nullptr) return;
  defaults_.SetLastCheck(Now());
  ResetUpdateCycle();
  if (isInstalling_ || (download_ != nullptr && kind < kind_)) return;

  const unsigned number = ++number_;
  kind_ = kind;
  information_ = ReadUpdateInformation();
  download_.reset();
  if (!IsTrustworthyAddress(information_.feedURL)) {
    return MainQueue::Shared().Post([this, number] {
      if (number == number_) FindNothing("The feed's address is missing or not secure: " + information_.feedURL);
    });
  }
  settings_ = {information_.version, Version(), delegate_->Channel()};
  const std::string url = FeedAddress();
  // Whoever gives the parameters may have begun another one.
  if (number != number_) return;
  Fetch(url, kLongestFeed, [this](Download::Result result) { ReceiveFeed(std::move(result)); });
}

std::string AppcastUpdater::FeedAddress() {
  const auto lastProfile = defaults_.LastProfileSubmission();
  const bool sendsProfile = defaults_.SendsSystemProfile() && !(lastProfile && Now() - *lastProfile < kProfileInterval);
  if (sendsProfile) defaults_.SetLastProfileSubmission(Now());
  return WithParameters(information_.feedURL, delegate_->FeedParameters(sendsProfile));
}

void AppcastUpdater::ReceiveFeed(Download::Result result) {
  if (!result.failure.empty()) return FindNothing("The feed can't be fetched: " + result.failure);
  std::string reason;
  auto decision = DecideUpdate(result.bytes, settings_, reason);
  if (!decision) return FindNothing("The feed can't be read: " + reason);
  Announce(std::move(*decision));
}

void AppcastUpdater::Announce(UpdateDecision decision) {
  if (!Tell([&](UpdaterDelegate& delegate) { delegate.FinishedLoadingAppcast(decision.items); })) return;
  if (!decision.update) {
    static_cast<void>(Tell([](UpdaterDelegate& delegate) { delegate.FoundNoUpdate(); }));
    return;
  }
  const auto key = UpdateKeyFrom(information_.publicKey);
  if (!key) return FindNothing("No update can be verified: the public key is missing or malformed");
  AppcastItem& item = decision.items[*decision.update];
  if (!Tell([&](UpdaterDelegate& delegate) { delegate.FoundUpdate(item); })) return;
  const bool isWanted = kind_ == Kind::User || (kind_ == Kind::Background && defaults_.AutomaticallyUpdates());
  if (isWanted) Install(std::move(item), std::move(decision.file), *key);
}

void AppcastUpdater::FindNothing(const std::string& reason) {
  static_cast<void>(Tell([&](UpdaterDelegate& delegate) {
    delegate.Failed(reason);
    delegate.FoundNoUpdate();
  }));
}

// ---- An installation

void AppcastUpdater::Install(AppcastItem item, UpdateFile file, const UpdateKey& key) {
  const auto installation = std::make_shared<Installation>(
      Installation{std::move(item), std::move(file), key, AppImageOf(information_.bundle), {}, false, {}});
  if (installed_ && std::is_lteq(CompareVersions(installation->item.version, *installed_))) {
    return EndInstallation(installation, "it is there already, and waits for the next start");
  }
  if (installation->target.empty()) {
    return EndInstallation(installation, "the application is no AppImage, and updated by its package manager");
  }
  isInstalling_ = true;
  const std::size_t limit = std::min<std::uint64_t>(installation->file.length.value_or(kLongestFile), kLongestFile);
  Fetch(installation->file.url, limit, [=, this](Download::Result result) {
    if (!result.failure.empty()) return EndInstallation(installation, result.failure);
    installation->bytes = std::move(result.bytes);
    Verify(installation);
  });
}

void AppcastUpdater::Verify(const SharedInstallation& installation) {
  Elsewhere(
      [installation] {
        installation->isSigned = IsSigned(installation->bytes, installation->file.signature, installation->key);
      },
      [installation, this] {
        if (installation->isSigned) return Replace(installation);
        EndInstallation(installation, "its file doesn't have the signature that the feed tells");
      });
}

void AppcastUpdater::Replace(const SharedInstallation& installation) {
  if (!Tell([&](UpdaterDelegate& delegate) { delegate.WillInstallUpdate(installation->item); })) return;
  // The version that runs goes on running; the next start is the new one's, even if this process doesn't get further.
  defaults_.SetInstalledVersion(installation->item.version);
  Elsewhere([installation] { installation->error = ReplaceFile(installation->target, installation->bytes); },
            [installation, this] { EndReplacement(installation); });
}

void AppcastUpdater::EndReplacement(const SharedInstallation& installation) {
  if (installation->error) {
    defaults_.SetInstalledVersion({});
    return EndInstallation(installation, installation->error.message());
  }
  installed_ = installation->item.version;
  EndInstallation(installation, {});
}

void AppcastUpdater::EndInstallation(const SharedInstallation& installation, const std::string& failure) {
  isInstalling_ = false;
  if (failure.empty()) return;
  static_cast<void>(Tell([&](UpdaterDelegate& delegate) {
    delegate.Failed("Update " + installation->item.version + " is not installed: " + failure);
  }));
}

// ----

void AppcastUpdater::Fetch(const std::string& url, std::size_t limit, Download::Done done) {
  download_ = std::make_unique<Download>(url, limit, [this, done = std::move(done)](Download::Result result) {
    download_.reset();
    WithAutoreleasePool([&] { done(std::move(result)); });
  });
}

bool AppcastUpdater::Tell(const std::function<void(UpdaterDelegate&)>& call) {
  const unsigned number = number_;
  if (delegate_ != nullptr) WithAutoreleasePool([&] { call(*delegate_); });
  return number == number_;
}

void AppcastUpdater::Elsewhere(std::function<void()> work, std::function<void()> rest) {
  BackgroundQueue::Shared().Post([this, number = number_, work = std::move(work), rest = std::move(rest)] {
    work();
    MainQueue::Shared().Post([this, number, rest] {
      if (number == number_) rest();
    });
  });
}

}  // namespace tessaro::platform
