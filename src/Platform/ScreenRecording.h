#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Base/Result.h"

// Pictures and films of a display. Displays are numbered; 0 is the main one. Main thread only; nothing throws.
// Functions given here are called once, on a later turn of the main queue.
namespace tessaro::platform {

// A part of a display, in points from its upper left corner. Without a size, all of it.
struct ScreenArea {
  int display = 0;
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

// Three bytes a pixel, red first, row by row from the top.
struct ScreenPicture {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> rgb;
};

// Asks for permission to see the screen, where the system, or the user, has to give one: without it there may be
// pictures of the desktop's background only. A failure says why nothing can be captured or recorded.
void RequestScreenAccess(std::function<void(const Result<void>& access)> answer) noexcept;

void CaptureDisplay(int display, std::function<void(const Result<ScreenPicture>& picture)> captured) noexcept;

// A film of an area, without sound.
class ScreenRecording {
 public:
  using Ended = std::function<void(const Result<void>& film)>;

  virtual ~ScreenRecording() = default;

  // The extension of this system's films, MP4 or QuickTime, with the dot.
  [[nodiscard]] static std::string FilmExtension() noexcept;

  // Begins a film, which appears at `path` when it is complete: when it is stopped, or after an hour. A recording whose
  // object or process ends earlier is lost.
  [[nodiscard]] static std::unique_ptr<ScreenRecording> Start(const std::string& path, const ScreenArea& area,
                                                              Ended ended) noexcept;

  // Completes the film, which takes a moment.
  virtual void Stop() noexcept = 0;
};

}  // namespace tessaro::platform
