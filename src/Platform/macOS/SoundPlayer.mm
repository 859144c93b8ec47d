#include "Platform/SoundPlayer.h"

#import <AppKit/AppKit.h>

#include <array>
#include <filesystem>
#include <utility>

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

// Main thread only.
struct SoundPlayer::Body {
  Ref<NSSound> sound;

  void Play(const std::string& file, const Failure& failure) {
    std::string reason;
    const std::string exception = Guarded([&] {
      [sound stop];
      sound = Adopt([[NSSound alloc] initWithContentsOfFile:TsNSString(file) byReference:YES]);
      if (!sound) reason = "the file is no sound that the system can play: " + file;
      if (sound && ![sound play]) reason = "the system does not play " + file;
    });
    if (!exception.empty()) reason = exception;
    if (!reason.empty()) failure(reason);
  }
};

SoundPlayer& SoundPlayer::Shared() {
  [[clang::no_destroy]] static SoundPlayer player;
  return player;
}

SoundPlayer::SoundPlayer() : body_(std::make_shared<Body>()) {}
SoundPlayer::~SoundPlayer() = default;

void SoundPlayer::Play(std::string file, Failure failure) noexcept {
  MainQueue::Shared().Post(
      [body = body_, file = std::move(file), failure = std::move(failure)] { body->Play(file, failure); });
}

void SoundPlayer::Stop() noexcept {
  MainQueue::Shared().Post([body = body_] { [body->sound stop]; });
}

}  // namespace tessaro::platform
