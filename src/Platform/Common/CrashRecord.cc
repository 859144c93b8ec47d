#include "Platform/Common/CrashRecord.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <string_view>
#include <utility>

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr char kSuffix[] = ".crash";
// The memory of a large application fills some hundred kilobytes.
constexpr std::size_t kLongestRecord = 4 * 1024 * 1024;
constexpr std::size_t kMostFrames = 512;
constexpr int kTries = 3;

constexpr std::pair<int, std::string_view> kSignalNames[] = {
    {SIGABRT, "SIGABRT"}, {SIGBUS, "SIGBUS"}, {SIGFPE, "SIGFPE"},   {SIGILL, "SIGILL"},
    {SIGSEGV, "SIGSEGV"}, {SIGSYS, "SIGSYS"}, {SIGTRAP, "SIGTRAP"},
};

std::string NewIdentifier() {
  std::array<unsigned char, 16> bytes{};
  arc4random_buf(bytes.data(), bytes.size());
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string identifier;
  for (const unsigned char byte : bytes) identifier.append({kDigits[byte >> 4], kDigits[byte & 15]});
  return identifier;
}

// ---- Reading

std::string_view TakeLine(std::string_view& text) {
  const auto end = text.find('\n');
  const auto line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return line;
}

std::string_view TakeWord(std::string_view& text) {
  const auto end = text.find(' ');
  const auto word = text.substr(0, end);
  text.remove_prefix(word.size());
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  return word;
}

std::uint64_t Hexadecimal(std::string_view text) {
  std::uint64_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value, 16);
  return value;
}

std::uint64_t Number(std::string_view text) {
  if (text.starts_with("0x")) return Hexadecimal(text.substr(2));
  std::int64_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return static_cast<std::uint64_t>(value);
}

// "START-END PERMISSIONS OFFSET DEVICE INODE    PATH". A module reaches from the first to the last mapping of its file;
// a file without executable mappings is no module.
void ReadMap(std::string_view line, std::vector<CrashModule>& modules, std::vector<bool>& hasCode) {
  const std::string_view range = TakeWord(line);
  const std::string_view permissions = TakeWord(line);
  for (int i = 0; i < 3; ++i) TakeWord(line);
  if (line.empty() || line.front() != '/') return;
  const auto dash = range.find('-');
  if (dash == std::string_view::npos) return;
  if (modules.empty() || modules.back().path != line) {
    modules.push_back({std::string(line), Hexadecimal(range.substr(0, dash)), 0});
    hasCode.push_back(false);
  }
  modules.back().end = Hexadecimal(range.substr(dash + 1));
  if (permissions.find('x') != std::string_view::npos) hasCode.back() = true;
}

std::vector<CrashModule> ReadMaps(std::string_view text) {
  std::vector<CrashModule> all;
  std::vector<bool> hasCode;
  while (!text.empty()) ReadMap(TakeLine(text), all, hasCode);
  std::vector<CrashModule> modules;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (hasCode[i]) modules.push_back(std::move(all[i]));
  }
  return modules;
}

// The clock counts finer than records do, and not as far.
std::chrono::system_clock::time_point Moment(std::uint64_t milliseconds) {
  using Clock = std::chrono::system_clock;
  constexpr auto kLast = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::duration::max()).count();
  return Clock::time_point(std::chrono::milliseconds(std::min<std::uint64_t>(milliseconds, kLast)));
}

void ReadLine(std::string_view line, CrashEvent& event) {
  const std::string_view name = TakeWord(line);
  const std::uint64_t number = Number(line);
  if (name == "signal") event.signal = static_cast<int>(number);
  if (name == "code") event.code = static_cast<int>(number);
  if (name == "address") event.faultAddress = number;
  if (name == "time") event.time = Moment(number);
  if (name == "process") event.process = static_cast<int>(number);
  if (name == "thread") event.thread = static_cast<int>(number);
  if (name == "name") event.threadName = line;
  if (name == "frame" && event.frames.size() < kMostFrames) event.frames.push_back(number);
}

std::string SignalName(int signal) {
  for (const auto& [number, name] : kSignalNames) {
    if (number == signal) return std::string(name);
  }
  return "signal " + std::to_string(signal);
}

std::string ReadAll(int file) {
  std::string text(kLongestRecord, '\0');
  std::size_t length = 0;
  for (ssize_t count = 0; length < text.size(); length += static_cast<std::size_t>(count)) {
    count = pread(file, text.data() + length, text.size() - length, static_cast<off_t>(length));
    if (count <= 0) break;
  }
  text.resize(length);
  return text;
}

// The text of a record whose process has ended. Removes the file.
std::optional<std::string> Take(const fs::path& path) {
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  // The lock belongs to the crashed process while it lives, or to another process that takes the record.
  if (!file || flock(file.get(), LOCK_EX | LOCK_NB) != 0) return std::nullopt;
  struct stat status;
  const bool isTaken = fstat(file.get(), &status) == 0 && status.st_nlink == 0;
  if (isTaken || unlink(path.c_str()) != 0) return std::nullopt;
  return ReadAll(file.get());
}

}  // namespace

Result<CrashRecord> CrashRecord::In(const fs::path& directory) {
  std::error_code error;
  fs::create_directories(directory, error);
  for (int i = 0; i < kTries && !error; ++i) {
    fs::path path = directory / (NewIdentifier() + kSuffix);
    FileDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file || flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
      error = {errno, std::generic_category()};
      continue;
    }
    // Before this one locked the file, another process may have removed it as a left-over.
    struct stat status;
    if (fstat(file.get(), &status) == 0 && status.st_nlink > 0) return CrashRecord(std::move(path), std::move(file));
  }
  return Fail("no record can be made in " + directory.native() + ": " + error.message());
}

void CrashRecord::RemoveIfUnused() const noexcept {
  struct stat status;
  if (fstat(file_.get(), &status) == 0 && status.st_size == 0) unlink(path_.c_str());
}

std::optional<CrashEvent> ReadCrashRecord(std::string_view text) noexcept {
  CrashEvent event;
  while (!text.empty()) {
    const std::string_view line = TakeLine(text);
    if (line == "maps") {
      event.modules = ReadMaps(text);
      break;
    }
    ReadLine(line, event);
  }
  if (event.signal == 0) return std::nullopt;
  event.signalName = SignalName(event.signal);
  return event;
}

std::vector<CrashEvent> TakeCrashEvents(const fs::path& directory) noexcept {
  std::vector<CrashEvent> events;
  std::error_code error;
  for (fs::directory_iterator entry(directory, error), end; !error && entry != end; entry.increment(error)) {
    const fs::path& path = entry->path();
    if (path.extension() != kSuffix) continue;
    const auto text = Take(path);
    auto event = text ? ReadCrashRecord(*text) : std::nullopt;
    if (!event) continue;
    event->identifier = path.stem();
    events.push_back(std::move(*event));
  }
  std::sort(events.begin(), events.end(), [](const auto& left, const auto& right) { return left.time < right.time; });
  return events;
}

}  // namespace tessaro::platform
