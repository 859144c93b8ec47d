#pragma once

#include <string>
#include <vector>

#include "Base/Result.h"

// The programs that files can be handed to. Texts are UTF-8; nothing starts a shell. Any thread; nothing throws.
namespace tessaro::platform {

struct ShareTarget {
  enum class Kind { Mail, Bluetooth, Application };

  Kind kind = Kind::Application;
  std::string identifier;  // of the application; for Bluetooth, the path of the program that sends
  std::string name;        // of the application
};

// The targets that take all of these files, in the order of their kinds, the default application first within each.
[[nodiscard]] std::vector<ShareTarget> ShareTargets(const std::vector<std::string>& paths) noexcept;

// Starts the target: a new mail with the files, or the application with the files open.
[[nodiscard]] Result<void> ShareWith(const ShareTarget& target, const std::vector<std::string>& paths) noexcept;

}  // namespace tessaro::platform
