#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Common/FileDescriptor.h"
#include "Platform/CrashReporter.h"

// A record is a text file that a process makes when it starts, locks as long as it lives, and writes when it crashes:
//
//   signal 11          lines of a name and a number, decimal or hexadecimal with "0x"
//   frame 0x55d0c0de   one for each
//   name node          the thread's
//   maps               followed by what the kernel tells of the memory, to the end
//
// Its name is the event's identifier.
namespace tessaro::platform {

// The record of this process.
class CrashRecord {
 public:
  // Nothing, with the reason, when there can be none.
  [[nodiscard]] static std::optional<CrashRecord> In(const std::filesystem::path& directory, std::string& reason);

  [[nodiscard]] int descriptor() const { return file_.get(); }

  // For a process that ends well. The file stays open: the process may still crash on its way out, and what it then
  // writes must not get into another one's file.
  void RemoveIfUnused() const noexcept;

 private:
  CrashRecord(std::filesystem::path path, FileDescriptor file) : path_(std::move(path)), file_(std::move(file)) {}

  std::filesystem::path path_;
  FileDescriptor file_;
};

// The events of processes that have ended, the earliest first. Their records are gone when this returns: a crash that
// is told must not be told again, whatever happens to whoever hears it.
[[nodiscard]] std::vector<CrashEvent> TakeCrashEvents(const std::filesystem::path& directory) noexcept;

// What a record says; nothing when it doesn't even name a signal. Any text may be given.
[[nodiscard]] std::optional<CrashEvent> ReadCrashRecord(std::string_view text) noexcept;

}  // namespace tessaro::platform
