#include "Platform/Linux/Recording/Recorder.h"

#include <X11/Xlib.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "Platform/Linux/Base/OwnDirectory.h"
#include "Platform/Linux/Base/XDisplay.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

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

}  // namespace

Recorder::Recorder(fs::path film, Ended ended)
    : film_(std::move(film)),
      part_(film_.parent_path() / ("." + film_.filename().native() + ".part")),
      ended_(std::move(ended)) {}

Recorder::~Recorder() {
  if (!isRunning_) return;
  uv_process_kill(process_.get(), SIGKILL);
  Discard();
}

Result<void> Recorder::Begin(const PixelArea& area) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return Fail(errno, std::strerror(errno));
  messages_ = FileDescriptor(ends[0]);
  return Spawn(area, FileDescriptor(ends[1]));
}

Result<void> Recorder::Spawn(const PixelArea& area, const FileDescriptor& errors) {
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

void Recorder::Stop() noexcept {
  // ffmpeg completes the film, and then exits with an error.
  if (isRunning_) uv_process_kill(process_.get(), SIGINT);
}

void Recorder::Discard() const {
  std::error_code error;
  fs::remove(part_, error);
}

std::string Recorder::Messages() const {
  std::array<char, 2048> text;
  const ssize_t length = read(messages_.get(), text.data(), text.size());
  std::string line(text.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  while (!line.empty() && line.back() == '\n') line.pop_back();
  return line.empty() ? std::string(kRecorderProgram) + " exited without a complete film" : line;
}

Result<void> Recorder::Complete() const {
  std::error_code error;
  if (fs::file_size(part_, error) == 0 || error || !HasIndex()) return Fail(Messages());
  fs::rename(part_, film_, error);
  if (error) return Fail(error.value(), error.message());
  return {};
}

// Players refuse a film without an index. It is written last, and stands first.
bool Recorder::HasIndex() const {
  const FileDescriptor file(open(part_.c_str(), O_RDONLY | O_CLOEXEC));
  std::array<char, 64> start{};
  if (!file || read(file.get(), start.data(), start.size()) <= 0) return false;
  return std::string_view(start.data(), start.size()).find("moov") != std::string_view::npos;
}

void Recorder::End() {
  isRunning_ = false;
  const auto film = Complete();
  if (!film) Discard();
  MainQueue::Shared().Post([ended = ended_, film] { ended(film); });
}

}  // namespace tessaro::platform
