#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Lifetime.h"

namespace tessaro::platform {

// The file of the sound with this name (no folder, no extension): a resource of the application's bundle, or a file in
// one of the sound folders. Empty when no such file can be played. Any thread; nothing throws.
[[nodiscard]] std::string SoundFileNamed(std::string_view name) noexcept;

// This system's sound folders besides Cocoa's own, in search order.
[[nodiscard]] std::vector<std::string> SystemSoundFolders() noexcept;

// Plays one sound at a time. Any thread; no call waits for the audio system, and none connects to it before the first
// sound.
class SoundPlayer {
 public:
  // Called on a thread of the player's when a sound could not be played. May be null.
  using Failure = std::function<void(const std::string& reason)>;

  static SoundPlayer& Shared();

  // Cuts off the sound that is playing.
  void Play(std::string file, Failure failure) noexcept;

  void Stop() noexcept;

  SoundPlayer(const SoundPlayer&) = delete;
  SoundPlayer& operator=(const SoundPlayer&) = delete;

 private:
  friend class Forever<SoundPlayer>;

  SoundPlayer();
  ~SoundPlayer();

  struct Body;
  std::shared_ptr<Body> body_;
};

}  // namespace tessaro::platform
