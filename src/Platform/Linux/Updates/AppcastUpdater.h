#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Base/Lifetime.h"
#include "Base/Result.h"
#include "Platform/Common/UpdateDecision.h"
#include "Platform/Linux/Base/WallClockTimer.h"
#include "Platform/Linux/Updates/Download.h"
#include "Platform/Linux/Updates/UpdateDefaults.h"
#include "Platform/Updater.h"

namespace tessaro::platform {

// Updates an AppImage from a feed: Linux has no updater framework.
class AppcastUpdater final : public Updater {
 public:
  AppcastUpdater();

  void SetDelegate(UpdaterDelegate& delegate) override;
  void SetUpdateCheckInterval(std::chrono::seconds interval) override { interval_ = interval; }
  void SetAutomaticallyChecks(bool automatically) override;
  void ResetUpdateCycle() override;
  bool CheckForUpdates(UpdaterInterface* interface) override { return Check(Kind::User, interface); }
  bool CheckForUpdatesInBackground() override { return Check(Kind::Background, nullptr); }
  bool CheckForUpdateInformation() override { return Check(Kind::Information, nullptr); }
  void Cancel() override;

  // Ends a running check silently, and all automatic ones.
  static constexpr EndStage kEnd = EndStage::Services;
  void Close() noexcept;

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

  void ReportRelaunch();
  void CheckIfDue();
  [[nodiscard]] TimeDefault::Time NextCheck() const;

  bool Check(Kind kind, UpdaterInterface* interface);
  [[nodiscard]] bool MayBegin(Kind kind) const;
  [[nodiscard]] UpdateSettings Settings() const;
  [[nodiscard]] std::string FeedAddress();
  void ReceiveFeed(Result<std::string> contents);
  void Announce(UpdateDecision decision);
  void FindNothing(const std::string& reason);

  void Offer(const SharedInstallation& installation);
  void Ask(const SharedInstallation& installation);
  void Choose(const SharedInstallation& installation, UpdaterInterface::Choice choice);
  void Install(const SharedInstallation& installation);
  void Verify(const SharedInstallation& installation);
  void Replace(const SharedInstallation& installation);
  void EndReplacement(const SharedInstallation& installation);
  void Refuse(const SharedInstallation& installation, const std::string& reason);

  void Fetch(const std::string& url, std::size_t limit, Download::Done done, Download::Progress progress = nullptr);

  // Calls the delegate. False when the check is not the running one any more.
  [[nodiscard]] bool Notify(const std::function<void(UpdaterDelegate&)>& call);
  // Calls the interface, if the check has one.
  void Show(const std::function<void(UpdaterInterface&)>& call);
  // Does `work` on another thread, and then, if the check is still the running one, the rest on the main thread.
  void InBackground(std::function<void()> work, std::function<void()> rest);

  UpdateDefaults defaults_;
  UpdaterDelegate* delegate_ = nullptr;
  std::chrono::seconds interval_{0};
  WallClockTimer timer_;

  unsigned number_ = 0;  // of the running check
  Kind kind_ = Kind::Information;
  Stage stage_ = Stage::Idle;
  UpdaterInterface* interface_ = nullptr;
  std::optional<std::string> installed_;  // the version that starts with the next launch
  UpdateInformation information_;
  std::string channel_;
  std::unique_ptr<Download> download_;
};

}  // namespace tessaro::platform
