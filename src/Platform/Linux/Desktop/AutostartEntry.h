#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "Base/Result.h"
#include "Platform/Linux/Base/KeyFiles.h"

namespace tessaro::platform {

// A desktop entry of the XDG autostart folders. Writing keeps the keys and comments that this class doesn't know.
class AutostartEntry {
 public:
  static AutostartEntry ForApplication(std::string_view name, std::string_view executable);

  // Nothing for a file that is no desktop entry.
  static std::optional<AutostartEntry> Read(const std::filesystem::path& file);

  [[nodiscard]] Result<void> Write(const std::filesystem::path& file) const { return WriteKeyFile(file, keys_.get()); }

  [[nodiscard]] std::string DisplayName() const;

  // The resolved path of the program; empty if missing.
  [[nodiscard]] std::filesystem::path Program() const;

  // Whether a session of this desktop starts it.
  [[nodiscard]] bool IsSwitchedOn() const;

  void SwitchOn();
  void Hide();

 private:
  explicit AutostartEntry(GKeyFilePtr keys) : keys_(std::move(keys)) {}

  [[nodiscard]] bool Has(const char* key) const {
    return g_key_file_has_key(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr);
  }
  [[nodiscard]] bool NamesThisDesktop(const char* key) const;

  GKeyFilePtr keys_;
};

// The text of an Exec key that starts `executable` without arguments.
[[nodiscard]] std::string ExecOf(std::string_view executable);

}  // namespace tessaro::platform
