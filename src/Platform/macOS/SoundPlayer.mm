#include "Platform/SoundPlayer.h"

#import <AppKit/AppKit.h>

#include <array>
#include <filesystem>
#include <utility>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/MainQueue.h"
#include "Platform/StandardDirectories.h"
#include "Platform/macOS/Guarded.h"

// NSSound, on the main queue, as its objects belong to one thread. Failures are reported there too. No consent.
namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr std::array kExtensions = {".aiff", ".aif", ".caf", ".wav", ".m4a", ".mp3"};

std::string FileIn(const fs::path& folder, std::string_view name) {
  for (const char* extension : kExtensions) {
    const fs::path file = folder / (std::string(name) + extension);
    std::error_code error;
    if (fs::is_regular_file(file, error)) return file;
  }
  return {};
}

void PlayOnMainThread(const std::string& file, const SoundFailure& failure) {
  static Forever<Ref<NSSound>> playing;
  Ref<NSSound>& sound = *playing;
  std::string reason;
  const std::string exception = Guarded([&] {
    [sound stop];
    sound = file.empty() ? nullptr : Adopt([[NSSound alloc] initWithContentsOfFile:TsNSString(file) byReference:YES]);
    if (!sound && !file.empty()) reason = "the file is no sound that the system can play: " + file;
    if (sound && ![sound play]) reason = "the system does not play " + file;
  });
  if (!exception.empty()) reason = exception;
  if (!reason.empty() && failure) failure(reason);
}

}  // namespace

std::string SoundFileNamed(std::string_view name) noexcept {
  if (name.empty() || name.find('/') != std::string_view::npos) return {};
  const std::array<fs::path, 4> folders = {TsStdString([[NSBundle mainBundle] resourcePath]),
                                           HomeDirectory() / "Library/Sounds", "/Library/Sounds",
                                           "/System/Library/Sounds"};
  for (const fs::path& folder : folders) {
    if (std::string file = FileIn(folder, name); !file.empty()) return file;
  }
  return {};
}

// All of them are Cocoa's own.
std::vector<std::string> SystemSoundFolders() noexcept { return {}; }

void PlaySound(std::string file, SoundFailure failure) noexcept {
  MainQueue::Shared().Post([file = std::move(file), failure = std::move(failure)] { PlayOnMainThread(file, failure); });
}

}  // namespace tessaro::platform
