#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "Base/Lifetime.h"
#include "Platform/Common/UpdateDecision.h"
#include "Platform/Linux/Base/WallClockTimer.h"
#include "Platform/Linux/Updates/Download.h"
#include "Platform/Linux/Updates/UpdateDefaults.h"
#include "Platform/Updater.h"

namespace tessaro::platform {

// The updater of a system that has none of its own.
class AppcastUpdater final : public Updater {
 public:
  AppcastUpdater();

  void SetDelegate(UpdaterDelegate& delegate) override;
  void SetUpdateCheckInterval(std::chrono::seconds interval) override { interval_ = interval; }
  void SetAutomaticallyChecks(bool automatically) override;
  void ResetUpdateCycle() override;
  void CheckForUpdates() override { Check(Kind::User); }
  void CheckForUpdatesInBackground() override { Check(Kind::Background); }
  void CheckForUpdateInformation() override { Check(Kind::Information); }

  // Ends a running check silently, and all automatic ones.
  static constexpr EndStage kEnd = EndStage::Services;
  void Close() noexcept;

 private:
  // The later ones do more.
  enum class Kind { Information, Background, User };

  // An update on its way onto the disk.
  struct Installation {
    AppcastItem item;
    UpdateFile file;
    UpdateKey key{};
    std::filesystem::path target;
    std::string bytes;
    bool isSigned = false;
    std::error_code error;
  };
  using SharedInstallation = std::shared_ptr<Installation>;

  void TellOfRelaunch();
  void CheckIfDue();
  [[nodiscard]] UpdateDefaults::Time NextCheck() const;

  void Check(Kind kind);
  [[nodiscard]] std::string FeedAddress();
  void ReceiveFeed(Download::Result result);
  void Announce(UpdateDecision decision);
  void FindNothing(const std::string& reason);

  void Install(AppcastItem item, UpdateFile file, const UpdateKey& key);
  void Verify(const SharedInstallation& installation);
  void Replace(const SharedInstallation& installation);
  void EndReplacement(const SharedInstallation& installation);
  void EndInstallation(const SharedInstallation& installation, const std::string& failure);

  void Fetch(const std::string& url, std::size_t limit, Download::Done done);

  // Calls the delegate. False when the check that it belongs to is not the running one any more.
  [[nodiscard]] bool Tell(const std::function<void(UpdaterDelegate&)>& call);
  // Does `work` on another thread, and then, if the check is still the running one, the rest on the main thread.
  void Elsewhere(std::function<void()> work, std::function<void()> rest);

  UpdateDefaults defaults_;
  UpdaterDelegate* delegate_ = nullptr;
  std::chrono::seconds interval_{0};
  WallClockTimer timer_;

  unsigned number_ = 0;  // of the running check
  Kind kind_ = Kind::Information;
  bool isInstalling_ = false;
  std::optional<std::string> installed_;  // the version that replaced the one that runs
  UpdateInformation information_;
  UpdateSettings settings_;
  std::unique_ptr<Download> download_;
};

}  // namespace tessaro::platform
