#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro::platform {

// The file of the sound that the system knows by a name, which has no folder and no extension: a resource of the
// application's bundle, or a file of one of the sound folders. Empty when there is none, or none that can be played.
// Nothing of this throws; any thread.
[[nodiscard]] std::string SoundFileNamed(std::string_view name) noexcept;

// The folders where this system keeps sounds besides Cocoa's own, the most important one first.
[[nodiscard]] std::vector<std::string> SystemSoundFolders() noexcept;

// Plays one sound at a time. Any thread; nothing waits for the audio system, which is not talked to before the first
// sound.
class SoundPlayer {
 public:
  // Is told, on a thread of the player's, why a sound could not be played.
  using Failure = std::function<void(const std::string& reason)>;

  static SoundPlayer& Shared();

  // Cuts off what is playing.
  void Play(std::string file, Failure failure) noexcept;

  void Stop() noexcept;

  SoundPlayer(const SoundPlayer&) = delete;
  SoundPlayer& operator=(const SoundPlayer&) = delete;

 private:
  SoundPlayer();
  ~SoundPlayer();

  struct Body;
  std::shared_ptr<Body> body_;
};

}  // namespace tessaro::platform
