#include "Platform/ScreenRecording.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <fcntl.h>
#include <unistd.h>
#include <uv.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "Base/UvHandle.h"
#include "Platform/Common/FileDescriptor.h"
#include "Platform/Linux/Base/GLibOwners.h"
#include "Platform/Linux/Base/OwnDirectory.h"
#include "Platform/Linux/Base/XDisplay.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr char kProgram[] = "ffmpeg";
constexpr char kLongestSeconds[] = "3600";

// Half a pixel of colour is more than films have.
int Even(int length) { return length & ~1; }

fs::path PartOf(const fs::path& film) { return film.parent_path() / ("." + film.filename().native() + ".part"); }

ScreenArea WithSize(ScreenArea area) {
  _XDisplay* display = XDisplay();
  const int screen = DefaultScreen(display);
  if (area.width <= 0 || area.height <= 0) area = {0, 0, DisplayWidth(display, screen), DisplayHeight(display, screen)};
  area.width = Even(area.width);
  area.height = Even(area.height);
  return area;
}

std::vector<std::string> Words(const ScreenArea& area, const fs::path& file) {
  const std::string size = std::to_string(area.width) + "x" + std::to_string(area.height);
  const std::string place =
      std::string(DisplayString(XDisplay())) + "+" + std::to_string(area.x) + "," + std::to_string(area.y);
  return {OwnDirectory() / "TessaroRecorder", kProgram, "-nostdin", "-loglevel", "error", "-y",
          // what
          "-f", "x11grab", "-framerate", "25", "-video_size", size, "-i", place, "-t", kLongestSeconds,
          // how: what every player plays
          "-c:v", "libx264", "-preset", "veryfast", "-crf", "23", "-pix_fmt", "yuv420p", "-movflags", "+faststart",
          // where
          "-f", "mp4", "file:" + file.native()};
}

class Recorder final : public ScreenRecording {
 public:
  Recorder(fs::path film, Ended ended) : film_(std::move(film)), part_(PartOf(film_)), ended_(std::move(ended)) {}

  ~Recorder() override {
    if (!isRunning_) return;
    uv_process_kill(process_.get(), SIGKILL);
    Discard();
  }

  // The reason when it can't be started.
  [[nodiscard]] std::string Start(const ScreenArea& area) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return std::strerror(errno);
    messages_ = FileDescriptor(ends[0]);
    const FileDescriptor theirs(ends[1]);
    const auto words = Words(WithSize(area), part_);
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    std::array<uv_stdio_container_t, 3> streams{};
    streams[2].flags = UV_INHERIT_FD;
    streams[2].data.fd = theirs.get();
    uv_process_options_t options{};
    options.file = arguments.front();
    options.args = arguments.data();
    options.stdio = streams.data();
    options.stdio_count = static_cast<int>(streams.size());
    options.exit_cb = [](uv_process_t* process, std::int64_t, int) { OwnerOf<Recorder>(process).End(); };
    int result = 0;
    process_ = MakeUvHandle<uv_process_t>(this, [&](uv_loop_t* loop, uv_process_t* process) {
      result = uv_spawn(loop, process, &options);
      return 0;  // libuv wants the handle closed even when the program did not start
    });
    isRunning_ = result == 0;
    return isRunning_ ? std::string() : std::string(uv_strerror(result));
  }

  void Stop() noexcept override {
    // It completes the film, and then ends as if it had failed.
    if (isRunning_) uv_process_kill(process_.get(), SIGINT);
  }

 private:
  void Discard() const {
    std::error_code error;
    fs::remove(part_, error);
  }

  [[nodiscard]] std::string Messages() const {
    std::array<char, 2048> text;
    const ssize_t length = read(messages_.get(), text.data(), text.size());
    std::string line(text.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    while (!line.empty() && line.back() == '\n') line.pop_back();
    return line.empty() ? std::string(kProgram) + " has ended without a film" : line;
  }

  // The reason when there is no film.
  [[nodiscard]] std::string Complete() const {
    std::error_code error;
    // A film that could not be completed has no end, and players refuse it.
    if (fs::file_size(part_, error) == 0 || error || !HasEnd()) return Messages();
    fs::rename(part_, film_, error);
    return error ? error.message() : std::string();
  }

  // Written last, and in front of the pictures: the index.
  [[nodiscard]] bool HasEnd() const {
    const FileDescriptor file(open(part_.c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 64> start{};
    if (!file || read(file.get(), start.data(), start.size()) <= 0) return false;
    return std::string_view(start.data(), start.size()).find("moov") != std::string_view::npos;
  }

  void End() {
    isRunning_ = false;
    const std::string failure = Complete();
    if (!failure.empty()) Discard();
    MainQueue::Shared().Post([ended = ended_, failure] { ended(failure); });
  }

  fs::path film_;
  fs::path part_;
  Ended ended_;
  FileDescriptor messages_;
  UvHandle<uv_process_t> process_;
  bool isRunning_ = false;
};

std::uint8_t Component(unsigned long pixel, unsigned long mask) {
  if (mask == 0) return 0;
  const int shift = __builtin_ctzl(mask);
  return static_cast<std::uint8_t>(((pixel & mask) >> shift) * 255 / (mask >> shift));
}

struct XImageDeleter {
  void operator()(XImage* image) const { XDestroyImage(image); }
};

}  // namespace

ScreenPicture CaptureScreen() noexcept {
  _XDisplay* display = XDisplay();
  if (display == nullptr) return {};
  const auto [x, y, width, height] =
      ScreenArea{0, 0, DisplayWidth(display, DefaultScreen(display)), DisplayHeight(display, DefaultScreen(display))};
  const std::unique_ptr<XImage, XImageDeleter> image(XGetImage(display, DefaultRootWindow(display), x, y,
                                                               static_cast<unsigned>(width),
                                                               static_cast<unsigned>(height), AllPlanes, ZPixmap));
  if (!image) return {};
  ScreenPicture picture{width, height, {}};
  picture.rgb.reserve(static_cast<std::size_t>(width) * height * 3);
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column) {
      const unsigned long pixel = XGetPixel(image.get(), column, row);
      picture.rgb.insert(picture.rgb.end(), {Component(pixel, image->red_mask), Component(pixel, image->green_mask),
                                             Component(pixel, image->blue_mask)});
    }
  }
  return picture;
}

std::string ScreenRecording::Obstacle() noexcept {
  if (XDisplay() == nullptr) return "there is no X display";
  const char* session = std::getenv("XDG_SESSION_TYPE");
  if (session != nullptr && std::string_view(session) == "wayland") {
    return "a Wayland session shows its screen to nobody but itself";
  }
  const GTextPtr program(g_find_program_in_path(kProgram));
  return program ? std::string() : std::string(kProgram) + " is not installed";
}

std::unique_ptr<ScreenRecording> ScreenRecording::Start(const std::string& path, const ScreenArea& area,
                                                        Ended ended) noexcept {
  auto recorder = std::make_unique<Recorder>(path, ended);
  if (std::string failure = recorder->Start(area); !failure.empty()) {
    MainQueue::Shared().Post([ended = std::move(ended), failure = std::move(failure)] { ended(failure); });
    return nullptr;
  }
  return recorder;
}

}  // namespace tessaro::platform
