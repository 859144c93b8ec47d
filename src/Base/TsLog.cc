#include "Base/TsLog.h"

#include <pthread.h>
#include <spdlog/async_logger.h>
#include <spdlog/details/os.h>
#include <spdlog/details/thread_pool.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/daily_file_sink.h>
#include <spdlog/sinks/dist_sink.h>
#include <spdlog/sinks/stdout_color_sinks.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "Base/TsUnicode.h"

namespace {

// Their memory is taken at once, about 400 bytes each.
constexpr std::size_t kQueuedMessages = 1024;
constexpr std::size_t kLongestText = 64 * 1024;
constexpr char kLinePattern[] = "%Y/%m/%d %H:%M:%S:%e [%^%l%$] %v (%g:%# %!)";
constexpr char kLogFileName[] = "TessaroNative.log";
constexpr char kLogFileStem[] = "TessaroNative_";

constexpr std::pair<TsLogFlag, spdlog::level::level_enum> kLevels[] = {
    {TsLogFlag::Error, spdlog::level::err},
    {TsLogFlag::Warning, spdlog::level::warn},
    {TsLogFlag::Info, spdlog::level::info},
    {TsLogFlag::Debug, spdlog::level::debug},
};

thread_local bool isMain = false;

spdlog::level::level_enum SpdlogLevel(TsLogFlag flag) {
  for (const auto& [known, level] : kLevels) {
    if (known == flag) return level;
  }
  return spdlog::level::info;
}

TsLogFlag Flag(spdlog::level::level_enum level) {
  for (const auto& [flag, known] : kLevels) {
    if (known == level) return flag;
  }
  return TsLogFlag::Info;
}

// How many bytes of UTF-8 at the beginning of a text are a control character or a line separator.
std::size_t ControlLength(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  if (first < 0x20) return first != '\t' ? 1 : 0;
  if (first == 0x7f) return 1;
  const bool isControl = first == 0xc2 && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xa0;
  if (isControl) return 2;
  return text.starts_with("\u2028") || text.starts_with("\u2029") ? 3 : 0;
}

bool IsTerminalWanted() {
  const char* request = std::getenv("TESSARO_NATIVE_LOG");
  return spdlog::details::os::in_terminal(stderr) || (request != nullptr && std::string_view(request) == "stderr");
}

// The daily sink removes only the files of the days just past; older ones are left from before a longer pause.
void RemoveFilesOfOtherDays(const std::filesystem::path& directory, const std::filesystem::path& current) {
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(directory, ignored)) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with(kLogFileStem) && entry.path() != current) {
      std::filesystem::remove(entry.path(), ignored);
    }
  }
}

class LoggerSink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
 public:
  explicit LoggerSink(std::shared_ptr<TsLogger> logger) : logger_(std::move(logger)) {}

  [[nodiscard]] bool Wraps(const std::shared_ptr<TsLogger>& logger) const { return logger_ == logger; }

 protected:
  void sink_it_(const spdlog::details::log_msg& message) override {
    logger_->Log({.text = {message.payload.data(), message.payload.size()},
                  .flag = Flag(message.level),
                  .file = message.source.filename,
                  .function = message.source.funcname,
                  .line = message.source.line,
                  .thread = {message.logger_name.data(), message.logger_name.size()},
                  .time = message.time});
  }
  void flush_() override { logger_->Flush(); }

 private:
  std::shared_ptr<TsLogger> logger_;
};

// The last sink: counts the messages that have passed all loggers.
class ProgressSink final : public spdlog::sinks::sink {
 public:
  void log(const spdlog::details::log_msg&) override {
    writerThread_ = std::this_thread::get_id();
    written_.fetch_add(1);
    written_.notify_all();
  }
  void flush() override {}
  void set_pattern(const std::string&) override {}
  void set_formatter(std::unique_ptr<spdlog::formatter>) override {}

  void WaitFor(std::uint64_t ticket) const {
    for (std::uint64_t written = written_; written < ticket; written = written_) written_.wait(written);
  }
  [[nodiscard]] bool IsWriterThread() const { return writerThread_.load() == std::this_thread::get_id(); }

 private:
  std::atomic<std::uint64_t> written_{0};
  std::atomic<std::thread::id> writerThread_{};
};

}  // namespace

void NameMainThread() noexcept { isMain = true; }

std::string_view CurrentThreadName() noexcept {
  if (isMain) return "main";
  thread_local std::array<char, 64> name{};
  if (pthread_getname_np(pthread_self(), name.data(), name.size()) != 0) return "";
  return name.data();
}

std::string TsEscapedForLog(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const std::string_view kept = Utf8Prefix(text, kLongestText);
  const bool isCut = kept.size() < text.size();
  std::string escaped;
  for (text = kept; !text.empty();) {
    const std::size_t control = ControlLength(text);
    if (text.front() == '\n') {
      escaped += "\\n";
    } else {
      for (const unsigned char c : text.substr(0, control)) {
        escaped.append({'\\', 'x', kDigits[c >> 4], kDigits[c & 15]});
      }
    }
    if (control == 0) escaped += text.front();
    text.remove_prefix(std::max<std::size_t>(control, 1));
  }
  return isCut ? escaped + "…" : escaped;
}

class TsLogFacility::Pipeline {
 public:
  Pipeline()
      : pool_(std::make_shared<spdlog::details::thread_pool>(kQueuedMessages, 1)),
        destinations_(std::make_shared<spdlog::sinks::dist_sink_mt>()),
        progress_(std::make_shared<ProgressSink>()),
        logger_(std::make_shared<spdlog::async_logger>("TessaroNative",
                                                       spdlog::sinks_init_list{destinations_, progress_}, pool_)) {
    logger_->set_level(spdlog::level::trace);
    // A full disk must not fill standard error as well.
    logger_->set_error_handler([](const std::string&) {});
  }

  void Add(spdlog::sink_ptr sink) { destinations_->add_sink(std::move(sink)); }

  void AddFile(std::shared_ptr<spdlog::sinks::daily_file_sink_mt> file) {
    file_ = file;
    Add(std::move(file));
  }

  [[nodiscard]] std::filesystem::path File() const { return file_ != nullptr ? file_->filename() : ""; }

  void AddLogger(std::shared_ptr<TsLogger> logger) {
    // Messages still in the queue were logged before the logger was added.
    Flush();
    const std::lock_guard lock(loggersMutex_);
    auto sink = std::make_shared<LoggerSink>(std::move(logger));
    loggers_.push_back(sink);
    Add(sink);
  }

  void RemoveLogger(const std::shared_ptr<TsLogger>& logger) {
    const std::lock_guard lock(loggersMutex_);
    const auto found = std::find_if(loggers_.begin(), loggers_.end(), [&](auto& sink) { return sink->Wraps(logger); });
    if (found == loggers_.end()) return;
    destinations_->remove_sink(*found);
    loggers_.erase(found);
  }

  void Log(const TsLogMessage& message) {
    const std::uint64_t ticket = Enqueue(message);
    if (message.flag == TsLogFlag::Error) WaitUntilOnDisk(ticket);
  }

  void Flush() {
    std::uint64_t ticket = 0;
    {
      const std::lock_guard lock(queueMutex_);
      ticket = queued_;
    }
    WaitUntilOnDisk(ticket);
  }

 private:
  std::uint64_t Enqueue(const TsLogMessage& message) {
    // Counting and queueing are one step, or a ticket could name another thread's message.
    const std::lock_guard lock(queueMutex_);
    // spdlog carries the logger's name with every message. There is only one logger, whose name isn't
    // written anywhere: the thread's takes its place.
    pool_->post_log(std::shared_ptr(logger_),
                    {message.time,
                     {message.file, message.line, message.function},
                     {message.thread.data(), message.thread.size()},
                     SpdlogLevel(message.flag),
                     {message.text.data(), message.text.size()}},
                    spdlog::async_overflow_policy::block);
    return ++queued_;
  }

  void WaitUntilOnDisk(std::uint64_t ticket) const {
    // A logger that logs an error runs on the very thread that would have to write it.
    if (progress_->IsWriterThread()) return;
    progress_->WaitFor(ticket);
    try {
      destinations_->flush();
    } catch (const std::exception&) {
      // The disk is full; there may be room for later messages.
    }
  }

  std::shared_ptr<spdlog::details::thread_pool> pool_;
  std::shared_ptr<spdlog::sinks::dist_sink_mt> destinations_;
  std::shared_ptr<ProgressSink> progress_;
  std::shared_ptr<spdlog::async_logger> logger_;
  std::mutex queueMutex_;
  std::uint64_t queued_ = 0;
  std::mutex loggersMutex_;
  std::vector<std::shared_ptr<LoggerSink>> loggers_;
  std::shared_ptr<spdlog::sinks::daily_file_sink_mt> file_;
};

TsLogFacility& TsLogFacility::Shared() {
  static Forever<TsLogFacility> facility;
  return *facility;
}

TsLogFacility::TsLogFacility() : pipeline_(std::make_unique<Pipeline>()) {}

void TsLogFacility::AddLogger(std::shared_ptr<TsLogger> logger) noexcept { pipeline_->AddLogger(std::move(logger)); }

void TsLogFacility::RemoveLogger(const std::shared_ptr<TsLogger>& logger) noexcept { pipeline_->RemoveLogger(logger); }

void TsLogFacility::AddTerminalLogger() noexcept {
  if (!IsTerminalWanted()) return;
  auto sink = std::make_shared<spdlog::sinks::stderr_color_sink_mt>();
  sink->set_pattern(kLinePattern);
  pipeline_->Add(std::move(sink));
}

bool TsLogFacility::AddDailyFileLogger(const std::filesystem::path& directory) noexcept {
  try {
    std::filesystem::create_directories(directory);
    auto sink = std::make_shared<spdlog::sinks::daily_file_sink_mt>((directory / kLogFileName).string(), 0, 0,
                                                                    /*truncate=*/false, /*max_files=*/1);
    sink->set_pattern(kLinePattern);
    RemoveFilesOfOtherDays(directory, sink->filename());
    pipeline_->AddFile(std::move(sink));
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void TsLogFacility::Log(const TsLogMessage& message) noexcept {
  if (message.isEscaped) return pipeline_->Log(message);
  const std::string text = TsEscapedForLog(message.text);
  TsLogMessage harmless = message;
  harmless.text = text;
  pipeline_->Log(harmless);
}

void TsLogFacility::Flush() noexcept { pipeline_->Flush(); }

std::filesystem::path TsLogFacility::File() noexcept {
  Flush();
  return pipeline_->File();
}

void TsAbort(const char* file, int line, const char* function, const char* text) {
  TsLogFacility::Shared().Flush();
  std::fprintf(stderr, "TessaroNative: %s:%d: %s: %s\n", file, line, function, text);
  std::fflush(stderr);
  std::abort();
}
