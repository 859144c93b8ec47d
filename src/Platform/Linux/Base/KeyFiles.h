#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Base/Result.h"
#include "Platform/Linux/Base/GLibOwners.h"

// Key files: desktop entries, lists of default applications, themes. Any thread; nothing throws.
namespace tessaro::platform {

using GKeyFilePtr = Owned<GKeyFile, g_key_file_unref>;

// The keys of a file with their comments and translations. nullptr for anything but a key file of at most 1 MiB:
// reading blocks script, and opening a pipe would wait for its other end.
[[nodiscard]] GKeyFilePtr ReadKeyFile(const std::filesystem::path& file);

// Replaces the file atomically, and makes its folder.
[[nodiscard]] Result<void> WriteKeyFile(const std::filesystem::path& file, GKeyFile* keys);

// Empty for a missing key.
[[nodiscard]] std::string TextIn(GKeyFile* keys, const char* group, const char* key);
[[nodiscard]] std::vector<std::string> ListIn(GKeyFile* keys, const char* group, const char* key);

// Without white space around them.
[[nodiscard]] std::vector<std::string> TextsOf(const GStringListPtr& list);

// The names of the running desktop (XDG_CURRENT_DESKTOP), the most specific one first.
[[nodiscard]] std::vector<std::string> CurrentDesktops();

// The parts of a theme of icons or sounds by the freedesktop standards, in descending precedence: folders with an index
// whose lists are separated by commas.
struct Theme {
  struct Part {
    std::filesystem::path folder;
    GKeyFilePtr index;
  };

  std::string name;
  std::vector<Part> parts;
};

struct ThemeKind {
  const char* setting;                       // of the user's choice, in GTK's settings file
  const char* group;                         // of the index
  std::vector<std::filesystem::path> bases;  // folders of themes
  std::vector<std::string> fallbacks;        // the last one is the root of every theme's inheritance
};

// The user's theme, those that it inherits from, and the fallbacks, in search order. Any thread; nothing throws.
[[nodiscard]] std::vector<Theme> ReadThemes(const ThemeKind& kind);

}  // namespace tessaro::platform
