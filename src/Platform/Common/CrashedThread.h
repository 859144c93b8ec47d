#pragma once

#include <csignal>
#include <cstdint>
#include <span>

// System-specific facts about a crashed thread. Safe in a signal handler unless said otherwise.
namespace tessaro::platform {

// The instruction that raised the signal, from its handler's context.
[[nodiscard]] std::uint64_t ProgramCounterOf(const void* context) noexcept;

// The system's number for the calling thread.
[[nodiscard]] std::int64_t ThreadIdentifier() noexcept;

// `name` ends with a NUL; it stays empty where the thread has none.
void ReadThreadName(std::span<char> name) noexcept;

// Sends the signal to the calling thread again, for the handler that is installed now.
void SendAgain(int signal, siginfo_t& information) noexcept;

// To be called before a crash: prepares what WriteMemoryMap() can't find out in a signal handler.
void PrepareMemoryMap() noexcept;

// Writes which files' code is where: lines of "START-END PERMISSIONS OFFSET DEVICE INODE PATH".
void WriteMemoryMap(int file) noexcept;

}  // namespace tessaro::platform
