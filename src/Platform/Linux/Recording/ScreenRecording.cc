#include "Platform/ScreenRecording.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "Base/UvHandle.h"
#include "Platform/Common/FileDescriptor.h"
#include "Platform/Linux/Base/GLibOwners.h"
#include "Platform/Linux/Base/Paths.h"
#include "Platform/Linux/Base/XDisplay.h"
#include "Platform/Linux/Recording/DisplayArea.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

// ---- Films

namespace fs = std::filesystem;

// The program that records the X screen.
constexpr char kRecorderProgram[] = "ffmpeg";
constexpr char kLongestSeconds[] = "3600";

// Colours have half the resolution of the film, in whole pixels.
int Even(int length) { return length & ~1; }

std::vector<std::string> CommandLine(const PixelArea& area, const fs::path& file) {
  const std::string size = std::to_string(Even(area.width)) + "x" + std::to_string(Even(area.height));
  const std::string place =
      std::string(DisplayString(XDisplay())) + "+" + std::to_string(area.x) + "," + std::to_string(area.y);
  return {OwnDirectory() / "TessaroRecorder", kRecorderProgram, "-nostdin", "-loglevel", "error", "-y",
          // Source
          "-f", "x11grab", "-framerate", "25", "-video_size", size, "-i", place, "-t", kLongestSeconds,
          // Formats that every player knows
          "-c:v", "libx264", "-preset", "veryfast", "-crf", "23", "-pix_fmt", "yuv420p", "-movflags", "+faststart",
          // Target
          "-f", "mp4", "file:" + file.native()};
}

// A process of that program. It writes a hidden file beside the film, which becomes the film when it is complete.
class Recorder final : public ScreenRecording {
 public:
  Recorder(fs::path film, Ended ended)
      : film_(std::move(film)),
        part_(film_.parent_path() / ("." + film_.filename().native() + ".part")),
        ended_(std::move(ended)) {}

  ~Recorder() override {
    if (!isRunning_) return;
    uv_process_kill(process_.get(), SIGKILL);
    Discard();
  }

  [[nodiscard]] Result<void> Begin(const PixelArea& area) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return Fail(errno, std::strerror(errno));
    messages_ = FileDescriptor(ends[0]);
    return Spawn(area, FileDescriptor(ends[1]));
  }

  void Stop() noexcept override {
    // ffmpeg completes the film, and then exits with an error.
    if (isRunning_) uv_process_kill(process_.get(), SIGINT);
  }

 private:
  [[nodiscard]] Result<void> Spawn(const PixelArea& area, const FileDescriptor& errors) {
    const auto words = CommandLine(area, part_);
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    std::array<uv_stdio_container_t, 3> streams{};
    streams[2].flags = UV_INHERIT_FD;
    streams[2].data.fd = errors.get();
    uv_process_options_t options{};
    options.file = arguments.front();
    options.args = arguments.data();
    options.stdio = streams.data();
    options.stdio_count = static_cast<int>(streams.size());
    options.exit_cb = [](uv_process_t* process, std::int64_t, int) { OwnerOf<Recorder>(process).End(); };
    int error = 0;
    // A process that could not be started must be closed like any other handle.
    process_ = MakeUvHandle<uv_process_t>(this, [&](uv_loop_t* loop, uv_process_t* process) {
      error = uv_spawn(loop, process, &options);
      return 0;
    });
    if (error != 0) return Fail(error, uv_strerror(error));
    isRunning_ = true;
    return {};
  }

  [[nodiscard]] Result<void> Complete() const {
    std::error_code error;
    if (fs::file_size(part_, error) == 0 || error || !HasIndex()) return Fail(Messages());
    fs::rename(part_, film_, error);
    if (error) return Fail(error.value(), error.message());
    return {};
  }

  // Players refuse a film without an index. It is written last, and stands first.
  [[nodiscard]] bool HasIndex() const {
    const FileDescriptor file(open(part_.c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 64> start{};
    if (!file || read(file.get(), start.data(), start.size()) <= 0) return false;
    return std::string_view(start.data(), start.size()).find("moov") != std::string_view::npos;
  }

  [[nodiscard]] std::string Messages() const {
    std::array<char, 2048> text;
    const ssize_t length = read(messages_.get(), text.data(), text.size());
    std::string line(text.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    while (!line.empty() && line.back() == '\n') line.pop_back();
    return line.empty() ? std::string(kRecorderProgram) + " exited without a complete film" : line;
  }

  void Discard() const {
    std::error_code error;
    fs::remove(part_, error);
  }

  void End() {
    isRunning_ = false;
    const auto film = Complete();
    if (!film) Discard();
    MainQueue::Shared().Post([ended = ended_, film] { ended(film); });
  }

  std::filesystem::path film_;
  std::filesystem::path part_;
  Ended ended_;
  FileDescriptor messages_;
  UvHandle<uv_process_t> process_;
  bool isRunning_ = false;
};

// ---- Pictures

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
