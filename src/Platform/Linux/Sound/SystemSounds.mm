#import <Foundation/Foundation.h>

#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Files.h"
#include "Platform/Linux/Base/KeyFiles.h"
#include "Platform/Linux/Base/Paths.h"
#include "Platform/SoundPlayer.h"
#include "Platform/StandardDirectories.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr std::array kExtensions = {".oga", ".ogg", ".wav", ".OGA", ".OGG", ".WAV"};

// By its contents: whether the player can decode the file.
bool IsSound(const fs::path& file) {
  constexpr std::size_t kWaveStart = 12;
  const std::string bytes = ReadFile(file, kWaveStart, Longer::IsCut).value_or("");
  const bool isWave = bytes.size() == kWaveStart && bytes.starts_with("RIFF") && bytes.ends_with("WAVE");
  return isWave || bytes.starts_with("OggS");
}

// The folders of the desktop's sound theme and of the themes that it inherits from, in search order.
std::vector<fs::path> SoundThemeFolders() {
  constexpr char kGroup[] = "Sound Theme";
  std::vector<fs::path> bases = {DataHome() / "sounds"};
  for (const fs::path& data : DataDirectories()) bases.push_back(data / "sounds");
  std::vector<fs::path> folders;
  for (const Theme& theme : ReadThemes({"gtk-sound-theme-name", kGroup, std::move(bases), {"freedesktop"}})) {
    for (const Theme::Part& part : theme.parts) {
      for (const std::string& each : ListIn(part.index.get(), kGroup, "Directories")) {
        folders.push_back(part.folder / each);
      }
    }
  }
  return folders;
}

std::vector<fs::path> SearchedFolders() {
  std::vector<fs::path> folders;
  @autoreleasepool {
    if (NSString* resources = [[NSBundle mainBundle] resourcePath]) {
      folders.emplace_back([resources fileSystemRepresentation]);
    }
  }
  folders.push_back(HomeDirectory() / "Library" / "Sounds");
  for (const char* folder : {"/Library/Sounds", "/Network/Library/Sounds", "/System/Library/Sounds"}) {
    folders.emplace_back(folder);
  }
  for (const std::string& folder : SystemSoundFolders()) folders.emplace_back(folder);
  return folders;
}

}  // namespace

std::string SoundFileNamed(std::string_view name) noexcept {
  if (name.empty() || name.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos) return {};
  for (const fs::path& folder : SearchedFolders()) {
    for (const char* extension : kExtensions) {
      fs::path file = folder / (std::string(name) + extension);
      if (IsSound(file)) return file;
    }
  }
  return {};
}

std::vector<std::string> SystemSoundFolders() noexcept {
  std::vector<std::string> folders;
  @autoreleasepool {
    // GNUstep's, the user's first.
    for (NSString* library in NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSAllDomainsMask, YES)) {
      folders.emplace_back([[library stringByAppendingPathComponent:@"Sounds"] fileSystemRepresentation]);
    }
  }
  for (const fs::path& folder : SoundThemeFolders()) folders.push_back(folder);
  return folders;
}

}  // namespace tessaro::platform
