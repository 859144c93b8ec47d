#pragma once

#include <string>
#include <vector>

// Handing files to other applications. Texts are UTF-8; nothing starts a shell. Any thread; nothing throws.
namespace tessaro::platform {

struct ShareTarget {
  enum class Kind { Mail, Bluetooth, Application };

  Kind kind = Kind::Application;
  std::string identifier;  // of the application; of Bluetooth, the program that sends
  std::string name;        // as people know it; none of Bluetooth
};

// What takes all of these files, in the order of its kinds, the default application first within each.
[[nodiscard]] std::vector<ShareTarget> ShareTargets(const std::vector<std::string>& paths) noexcept;

// Has the target begin: a new mail with the files, or whatever it does with them. False when it can't be started.
[[nodiscard]] bool ShareFiles(const ShareTarget& target, const std::vector<std::string>& paths) noexcept;

}  // namespace tessaro::platform
