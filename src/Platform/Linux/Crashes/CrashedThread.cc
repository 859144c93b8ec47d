#include "Platform/Common/CrashedThread.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace tessaro::platform {

std::uint64_t ProgramCounterOf(const void* context) noexcept {
  const auto& machine = static_cast<const ucontext_t*>(context)->uc_mcontext;
#if defined(__x86_64__)
  return static_cast<std::uint64_t>(machine.gregs[REG_RIP]);
#elif defined(__aarch64__)
  return machine.pc;
#else
#error "Where is the program counter?"
#endif
}

std::int64_t ThreadIdentifier() noexcept { return syscall(SYS_gettid); }

void ReadThreadName(std::span<char> name) noexcept {
  std::array<char, 16> own{};
  prctl(PR_GET_NAME, own.data());
  std::copy_n(own.begin(), std::min(own.size(), name.size()), name.begin());
}

void SendAgain(int signal, siginfo_t& information) noexcept {
  syscall(SYS_rt_tgsigqueueinfo, getpid(), syscall(SYS_gettid), signal, &information);
}

void PrepareMemoryMap() noexcept {}

void WriteMemoryMap(int file) noexcept {
  const int maps = open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  if (maps < 0) return;
  std::array<char, 4096> piece;
  for (ssize_t length; (length = read(maps, piece.data(), piece.size())) > 0;) {
    static_cast<void>(!write(file, piece.data(), static_cast<std::size_t>(length)));
  }
  close(maps);
}

}  // namespace tessaro::platform
