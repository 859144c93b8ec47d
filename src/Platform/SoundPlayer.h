#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro::platform {

// The file of the sound with this name (no folder, no extension): a resource of the application's bundle, or a file in
// one of the sound folders. Empty when no such file can be played. Any thread; nothing throws.
[[nodiscard]] std::string SoundFileNamed(std::string_view name) noexcept;

// This system's sound folders besides Cocoa's own, in search order.
[[nodiscard]] std::vector<std::string> SystemSoundFolders() noexcept;

// Called on a thread of the player's when a sound could not be played. May be null.
using SoundFailure = std::function<void(const std::string& reason)>;

// Plays a sound in the place of the one that is playing; without a file there is silence. Any thread. Doesn't wait for
// the audio system, and doesn't connect to it before the first sound.
void PlaySound(std::string file, SoundFailure failure) noexcept;

}  // namespace tessaro::platform
