#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "Base/Lifetime.h"

// The flag of a message; a message has exactly one.
enum class TsLogFlag : std::uint32_t { Error = 1, Warning = 2, Info = 4, Debug = 8 };

// Every message is logged at this level: all flags pass.
inline constexpr std::uint32_t kTsLogLevelAll = 31;

// A text with its control characters and line separators escaped, cut after 64 KB: much of what is logged comes from
// outside, could write lines that look like others, and could fill the disk.
[[nodiscard]] std::string TsEscapedForLog(std::string_view text);

// The name by which the log calls the calling thread: "main" for the thread that said so, the system's name for every
// other. Valid until the thread asks again.
[[nodiscard]] std::string_view CurrentThreadName() noexcept;

// The system names the main thread after the program.
void NameMainThread() noexcept;

struct TsLogMessage {
  std::string_view text;  // UTF-8, valid only during the call; logged escaped
  bool isEscaped = false;
  TsLogFlag flag = TsLogFlag::Info;
  std::uint32_t level = kTsLogLevelAll;
  std::int32_t context = 0;
  const char* file = "";      // source file, relative to the project; lives as long as the process
  const char* function = "";  // full signature; lives as long as the process
  std::int32_t line = 0;
  std::string_view thread = CurrentThreadName();  // valid only during the call
  std::chrono::system_clock::time_point time = std::chrono::system_clock::now();
};

// A destination of log messages. Both functions run on the logging thread, one call at a time.
class TsLogger {
 public:
  virtual ~TsLogger() = default;
  virtual void Log(const TsLogMessage& message) noexcept = 0;
  virtual void Flush() noexcept {}
};

// Hands messages to all loggers, in the order in which they were logged. A message flagged as an error has reached
// every logger when Log() returns; the others are written asynchronously. Thread-safe; nothing throws.
class TsLogFacility {
 public:
  static TsLogFacility& Shared();

  // The logger receives what is logged from now on.
  void AddLogger(std::shared_ptr<TsLogger> logger) noexcept;
  void RemoveLogger(const std::shared_ptr<TsLogger>& logger) noexcept;

  // Coloured lines on the terminal that standard error is connected to. Where it is not a terminal nothing is
  // written, unless the environment says TESSARO_NATIVE_LOG=stderr: programs that read our standard error must not
  // find our log in it.
  void AddTerminalLogger() noexcept;

  // One file a day below `directory` (created when missing), of which only the newest is kept.
  // False when the file cannot be written; the facility then goes on without it.
  [[nodiscard]] bool AddDailyFileLogger(const std::filesystem::path& directory) noexcept;

  void Log(const TsLogMessage& message) noexcept;

  // Returns when everything logged so far has been written.
  void Flush() noexcept;

  // The log goes on after the end: whatever ends late may still fail.
  static constexpr EndStage kEnd = EndStage::Log;
  void Close() noexcept { Flush(); }

  // The file that everything logged so far today is in; empty if missing. On the thread that added it.
  [[nodiscard]] std::filesystem::path File() noexcept;

 private:
  friend class Forever<TsLogFacility>;
  TsLogFacility();
  ~TsLogFacility() = delete;

  class Pipeline;
  std::unique_ptr<Pipeline> pipeline_;
};

// Log calls that note the place they stand in.
//
// TsLogText* take UTF-8 text (std::string_view) and serve plain C++; the others take an NSString format with its
// arguments and serve Objective-C++.
#define TS_LOG_TEXT(flag_, text_) \
  TsLogFacility::Shared().Log(    \
      {.text = (text_), .flag = (flag_), .file = __FILE__, .function = __PRETTY_FUNCTION__, .line = __LINE__})

#define TsLogTextError(text) TS_LOG_TEXT(TsLogFlag::Error, text)
#define TsLogTextWarning(text) TS_LOG_TEXT(TsLogFlag::Warning, text)
#define TsLogTextInfo(text) TS_LOG_TEXT(TsLogFlag::Info, text)
#define TsLogTextDebug(text) TS_LOG_TEXT(TsLogFlag::Debug, text)

// Ends the process with `text` where `condition` doesn't hold: whoever has called has broken a contract that nothing
// sensible could follow from.
#define TsAssert(condition, text) \
  ((condition) ? static_cast<void>(0) : TsAbort(__FILE__, __LINE__, __func__, "Assertion failed: " text))

[[noreturn]] void TsAbort(const char* file, int line, const char* function, const char* text);

#ifdef __OBJC__

#import <Foundation/NSString.h>

void TsLogFormat(TsLogFlag flag, const char* file, const char* function, int line, NSString* format, ...)
    NS_FORMAT_FUNCTION(5, 6);

#define TS_LOG(flag_, ...) TsLogFormat(flag_, __FILE__, __PRETTY_FUNCTION__, __LINE__, __VA_ARGS__)

#define TsLogError(...) TS_LOG(TsLogFlag::Error, __VA_ARGS__)
#define TsLogWarning(...) TS_LOG(TsLogFlag::Warning, __VA_ARGS__)
#define TsLogInfo(...) TS_LOG(TsLogFlag::Info, __VA_ARGS__)
#define TsLogDebug(...) TS_LOG(TsLogFlag::Debug, __VA_ARGS__)

#endif
