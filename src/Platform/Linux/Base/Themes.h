#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Linux/Base/KeyFiles.h"

namespace tessaro::platform {

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
