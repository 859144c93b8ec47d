#include "Platform/Common/CrashedThread.h"

#include <mach-o/dyld.h>
#include <mach-o/loader.h>
#include <pthread.h>
#include <sys/ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

// dyld's images, as they are when crashes begin to be handled: its functions take locks, so that images loaded later
// are missing. Crashpad, if the host has it, listens to the kernel's exceptions and comes after these handlers.
namespace tessaro::platform {

namespace {

std::string& MemoryMap() {
  [[clang::no_destroy]] static std::string map;
  return map;
}

// The length of an image's code in memory; 0 where its header does not say.
std::uint64_t CodeLength(const mach_header_64& header) {
  const auto* command = reinterpret_cast<const load_command*>(&header + 1);
  for (std::uint32_t i = 0; i < header.ncmds; ++i) {
    const auto* segment = reinterpret_cast<const segment_command_64*>(command);
    if (command->cmd == LC_SEGMENT_64 && std::strncmp(segment->segname, SEG_TEXT, sizeof segment->segname) == 0)
      return segment->vmsize;
    command = reinterpret_cast<const load_command*>(reinterpret_cast<const char*>(command) + command->cmdsize);
  }
  return 0;
}

std::string LineOf(const mach_header_64& header, const char* path) {
  const auto start = reinterpret_cast<std::uintptr_t>(&header);
  std::array<char, 80> range;
  const int length = std::snprintf(range.data(), range.size(), "%016" PRIx64 "-%016" PRIx64 " r-xp 0 0 0 ",
                                   static_cast<std::uint64_t>(start), start + CodeLength(header));
  return std::string(range.data(), static_cast<std::size_t>(length)) + path + "\n";
}

}  // namespace

std::uint64_t ProgramCounterOf(const void* context) noexcept {
  const auto& machine = *static_cast<const ucontext_t*>(context)->uc_mcontext;
#if defined(__arm64__)
  return arm_thread_state64_get_pc(machine.__ss);
#else
  return machine.__ss.__rip;
#endif
}

std::int64_t ThreadIdentifier() noexcept {
  std::uint64_t identifier = 0;
  pthread_threadid_np(nullptr, &identifier);
  return static_cast<std::int64_t>(identifier);
}

void ReadThreadName(std::span<char> name) noexcept { pthread_getname_np(pthread_self(), name.data(), name.size()); }

void SendAgain(int signal, siginfo_t&) noexcept { pthread_kill(pthread_self(), signal); }

void PrepareMemoryMap() noexcept {
  for (std::uint32_t i = 0; i < _dyld_image_count(); ++i) {
    const auto* header = reinterpret_cast<const mach_header_64*>(_dyld_get_image_header(i));
    const char* path = _dyld_get_image_name(i);
    if (header != nullptr && path != nullptr) MemoryMap() += LineOf(*header, path);
  }
}

void WriteMemoryMap(int file) noexcept {
  for (std::string_view rest = MemoryMap(); !rest.empty();) {
    const ssize_t written = write(file, rest.data(), rest.size());
    if (written <= 0) return;
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace tessaro::platform
