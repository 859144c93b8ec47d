#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/UserNotifications.h"

namespace tessaro::platform {

// An alert on the screen of one notification server.
struct ServerAlert {
  std::string server;  // its OwnerIdentity()
  std::uint32_t id = 0;
};

// An alert that is scheduled or on screen.
struct KeptAlert {
  UserNotifications::Key key;
  UserNotification alert;
  std::optional<UserNotifications::Moment> due;
  std::optional<ServerAlert> shown;
};

// Keeps the application's alerts beyond the process: a folder with a file for each. Nothing throws.
class AlertFiles {
 public:
  explicit AlertFiles(std::filesystem::path directory) : directory_(std::move(directory)) {}

  // In no order. Files that are not ours are ignored.
  [[nodiscard]] std::vector<KeptAlert> All() const noexcept;

  // False when the file could not be written. The file of a scheduled alert survives a power failure.
  [[nodiscard]] bool Keep(const KeptAlert& alert) const noexcept;

  void Remove(const UserNotifications::Key& key) const noexcept;

 private:
  [[nodiscard]] std::filesystem::path FileOf(const UserNotifications::Key& key) const;

  const std::filesystem::path directory_;
};

}  // namespace tessaro::platform
