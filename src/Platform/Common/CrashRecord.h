#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "Platform/Common/FileDescriptor.h"
#include "Platform/CrashReporter.h"

// A record is a text file that a process makes when it starts, locks as long as it lives, and writes when it crashes:
//
//   signal 11          lines of a name and a number, decimal or hexadecimal with "0x"
//   frame 0x55d0c0de   one for each
//   name node          the thread's
//   maps               followed by the mappings of the memory, as in Linux's /proc/self/maps, to the end
//
// The file's name is the event's identifier.
namespace tessaro::platform {

// The record of this process.
class CrashRecord {
 public:
  // Fails when the file can't be made.
  [[nodiscard]] static Result<CrashRecord> In(const std::filesystem::path& directory);

  [[nodiscard]] int descriptor() const { return file_.get(); }

  // For a process that exits without a crash. The descriptor stays open: the process may still crash on its way out,
  // and must not write into another file that has got the same descriptor.
  void RemoveIfUnused() const noexcept;

 private:
  CrashRecord(std::filesystem::path path, FileDescriptor file) : path_(std::move(path)), file_(std::move(file)) {}

  std::filesystem::path path_;
  FileDescriptor file_;
};

// Handles the signals of crashes from now on: writes the crash to `record`, an empty file, and passes the signal on to
// the handler that was installed before. Once in a process; the calling thread gets a signal stack. False, with errno,
// when the handlers can't be installed.
[[nodiscard]] bool HandleCrashes(int record, CrashReporter::FaultClaim claim) noexcept;

// The events of processes that have ended, the earliest first. Their records are removed before this returns, so that a
// crash is reported once even if reporting it crashes.
[[nodiscard]] std::vector<CrashEvent> TakeCrashEvents(const std::filesystem::path& directory) noexcept;

// The event in the text of a record, which may be malformed; nothing when it names no signal.
[[nodiscard]] std::optional<CrashEvent> ReadCrashRecord(std::string_view text) noexcept;

}  // namespace tessaro::platform
