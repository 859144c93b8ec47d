#include "Platform/ScreenRecording.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <utility>

#include "Platform/Linux/Base/GLibOwners.h"
#include "Platform/Linux/Base/WaylandSession.h"
#include "Platform/Linux/Base/XDisplay.h"
#include "Platform/Linux/Recording/Recorder.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

std::uint8_t Component(unsigned long pixel, unsigned long mask) {
  if (mask == 0) return 0;
  const int shift = __builtin_ctzl(mask);
  return static_cast<std::uint8_t>(((pixel & mask) >> shift) * 255 / (mask >> shift));
}

struct XImageDeleter {
  void operator()(XImage* image) const { XDestroyImage(image); }
};

Result<void> ScreenAccess() {
  if (XDisplay() == nullptr) return Fail("there is no X display");
  if (IsWaylandSession()) return Fail("screen capture is not available under Wayland");
  const GTextPtr program(g_find_program_in_path(kRecorderProgram));
  if (!program) return Fail(std::string(kRecorderProgram) + " is not installed");
  return {};
}

Result<ScreenPicture> PictureOf(int display) {
  _XDisplay* server = XDisplay();
  const auto area = server != nullptr ? PixelsOf({.display = display}) : std::nullopt;
  if (!area) return Fail("there is no such display");
  const std::unique_ptr<XImage, XImageDeleter> image(
      XGetImage(server, DefaultRootWindow(server), area->x, area->y, static_cast<unsigned>(area->width),
                static_cast<unsigned>(area->height), AllPlanes, ZPixmap));
  if (!image) return Fail("the X server gives no picture of the screen");
  ScreenPicture picture{area->width, area->height, {}};
  picture.rgb.reserve(static_cast<std::size_t>(area->width) * area->height * 3);
  for (int row = 0; row < area->height; ++row) {
    for (int column = 0; column < area->width; ++column) {
      const unsigned long pixel = XGetPixel(image.get(), column, row);
      picture.rgb.insert(picture.rgb.end(), {Component(pixel, image->red_mask), Component(pixel, image->green_mask),
                                             Component(pixel, image->blue_mask)});
    }
  }
  return picture;
}

}  // namespace

void RequestScreenAccess(std::function<void(const Result<void>&)> answer) noexcept {
  MainQueue::Shared().Post([answer = std::move(answer), access = ScreenAccess()] { answer(access); });
}

void CaptureDisplay(int display, std::function<void(const Result<ScreenPicture>&)> captured) noexcept {
  MainQueue::Shared().Post([captured = std::move(captured), display] { captured(PictureOf(display)); });
}

std::string ScreenRecording::FilmExtension() noexcept { return ".mp4"; }

std::unique_ptr<ScreenRecording> ScreenRecording::Start(const std::string& path, const ScreenArea& area,
                                                        Ended ended) noexcept {
  const auto pixels = PixelsOf(area);
  auto recorder = std::make_unique<Recorder>(path, ended);
  const Result<void> begun = pixels ? recorder->Begin(*pixels) : Fail("there is no such display");
  if (begun) return recorder;
  MainQueue::Shared().Post([ended = std::move(ended), begun] { ended(begun); });
  return nullptr;
}

}  // namespace tessaro::platform
