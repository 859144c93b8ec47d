#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tessaro::platform {

// A part of the display, in pixels from its upper left. Without a size, all of it.
struct ScreenArea {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

// What is on the display: three bytes a pixel, red first, row by row from the top. Empty when it can't be had.
struct ScreenPicture {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> rgb;
};

// Main thread only.
[[nodiscard]] ScreenPicture CaptureScreen() noexcept;

// A film of what is on the display, without sound. Main thread only.
class ScreenRecording {
 public:
  // Told once, on a later turn of the event loop, with the reason when there is no film.
  using Ended = std::function<void(const std::string& failure)>;

  virtual ~ScreenRecording() = default;

  // Why this session can't be recorded; empty when it can.
  [[nodiscard]] static std::string Obstacle() noexcept;

  // Begins an MP4 file, which appears at `path` when it is complete; that is after an hour, unless it is stopped
  // before. It ends with this object, and with the process; what was recorded is then lost.
  [[nodiscard]] static std::unique_ptr<ScreenRecording> Start(const std::string& path, const ScreenArea& area,
                                                              Ended ended) noexcept;

  // Completes the film, which takes a moment.
  virtual void Stop() noexcept = 0;
};

}  // namespace tessaro::platform
