// Preloaded into a process: lets one call of a class fail, the one with a number. Calls count only when the module, or
// a library that works for it, has made them; those of the engine and of GNUstep don't.
//
// Script talks to it by files: opening "/torture/write/3" has the third write from now on fail, and the link
// "/torture/count" leads to how many calls there have been, and whether one has failed: "5 1".

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xproto.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
}

namespace {

enum Class { None, Open, Write, Sync, Rename, Connect, Send, Receive, Memory, X };

constexpr std::array<std::string_view, 10> kNames = {"none",    "open", "write",   "sync",   "rename",
                                                     "connect", "send", "receive", "memory", "x"};

// Libraries whose calls count as the module's.
constexpr std::array<std::string_view, 13> kLibraries = {
    "TessaroNative", "TessaroTransfers", "libstdc++", "libspdlog", "libfmt",     "libsystemd", "libsdbus-c++",
    "libsecret",     "libgio",           "libglib",   "libcurl",   "libnghttp2", "libpugixml"};
// These end the process when memory runs out, and mean to; libcurl 7.88 divides by zero when a table can't be made.
constexpr std::array<std::string_view, 7> kWithoutMemory = {"libstdc++", "libspdlog", "libfmt", "libsdbus-c++",
                                                            "libgio",    "libglib",   "libcurl"};

struct Range {
  std::uintptr_t start;
  std::uintptr_t end;
  bool takesNoMemory;
};

std::array<Range, 64> ranges;
std::atomic<std::size_t> rangeCount;
std::atomic<Class> armed{None};
std::atomic<int> wanted;
std::atomic<int> count;
std::atomic<int> failures;

template <std::size_t size>
bool Contains(const std::array<std::string_view, size>& names, std::string_view path) {
  for (const std::string_view name : names) {
    if (path.find(name) != path.npos) return true;
  }
  return false;
}

int NoteLibrary(dl_phdr_info* info, std::size_t, void*) {
  const std::string_view path = info->dlpi_name;
  if (!Contains(kLibraries, path) || rangeCount == ranges.size()) return 0;
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const auto& segment = info->dlpi_phdr[i];
    if (segment.p_type != PT_LOAD || (segment.p_flags & PF_X) == 0 || rangeCount == ranges.size()) continue;
    const std::uintptr_t start = info->dlpi_addr + segment.p_vaddr;
    const bool takesNoMemory = Contains(kWithoutMemory, path);
    ranges.at(rangeCount++) = {start, start + segment.p_memsz, takesNoMemory};
  }
  return 0;
}

// Whether this call, which `caller` has made, is the one to fail.
bool Fails(Class kind, const void* caller) {
  if (armed.load(std::memory_order_relaxed) != kind) return false;
  const auto address = reinterpret_cast<std::uintptr_t>(caller);
  for (std::size_t i = 0; i < rangeCount; ++i) {
    const Range& range = ranges.at(i);
    if (address < range.start || address >= range.end) continue;
    if (kind == Memory && range.takesNoMemory) return false;
    if (++count != wanted) return false;
    ++failures;
    return true;
  }
  return false;
}

void RedirectDeeplyBound();

bool Command(const char* path) {
  constexpr std::string_view kPrefix = "/torture/";
  if (path == nullptr || !std::string_view(path).starts_with(kPrefix)) return false;
  const std::string_view command = std::string_view(path).substr(kPrefix.size());
  const auto slash = command.find('/');
  armed = None;
  rangeCount = 0;
  dl_iterate_phdr(NoteLibrary, nullptr);
  RedirectDeeplyBound();
  count = 0;
  failures = 0;
  wanted = slash == command.npos ? 0 : std::atoi(command.data() + slash + 1);
  for (std::size_t kind = Open; kind < kNames.size(); ++kind) {
    if (command.substr(0, slash) == kNames.at(kind)) armed = static_cast<Class>(kind);
  }
  return true;
}

template <typename Function>
Function* Next(const char* name) {
  void* found = dlsym(RTLD_NEXT, name);
  // A library that an add-on brings along is in no scope of the process's.
  if (found == nullptr) found = dlsym(dlopen("libxcb.so.1", RTLD_LAZY | RTLD_NOLOAD), name);
  return reinterpret_cast<Function*>(found);
}

template <typename Result>
Result Failed(int code, Result result) {
  errno = code;
  return result;
}

}  // namespace

#define CALLER __builtin_return_address(0)
#define NEXT(function) static auto* const next = Next<decltype(function)>(#function)

#pragma GCC visibility push(default)
extern "C" {

#define OPENS(function)                                                        \
  int function(const char* path, int flags, ...) {                             \
    NEXT(function);                                                            \
    va_list arguments;                                                         \
    va_start(arguments, flags);                                                \
    const auto mode = va_arg(arguments, mode_t);                               \
    va_end(arguments);                                                         \
    if (Command(path)) return Failed(ENOENT, -1);                              \
    return Fails(Open, CALLER) ? Failed(EMFILE, -1) : next(path, flags, mode); \
  }
OPENS(open)
OPENS(open64)

FILE* fopen(const char* path, const char* mode) {
  NEXT(fopen);
  return Fails(Open, CALLER) ? Failed<FILE*>(EMFILE, nullptr) : next(path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
  NEXT(fopen64);
  return Fails(Open, CALLER) ? Failed<FILE*>(EMFILE, nullptr) : next(path, mode);
}

ssize_t readlink(const char* path, char* buffer, std::size_t size) {
  NEXT(readlink);
  if (std::string_view(path) != "/torture/count") return next(path, buffer, size);
  return std::snprintf(buffer, size, "%d %d", count.load(), failures.load());
}

ssize_t write(int file, const void* bytes, std::size_t size) {
  NEXT(write);
  return Fails(Write, CALLER) ? Failed<ssize_t>(ENOSPC, -1) : next(file, bytes, size);
}

ssize_t writev(int file, const iovec* pieces, int number) {
  NEXT(writev);
  return Fails(Write, CALLER) ? Failed<ssize_t>(ENOSPC, -1) : next(file, pieces, number);
}

std::size_t fwrite(const void* bytes, std::size_t size, std::size_t number, FILE* file) {
  NEXT(fwrite);
  return Fails(Write, CALLER) ? Failed<std::size_t>(ENOSPC, 0) : next(bytes, size, number, file);
}

int fflush(FILE* file) {
  NEXT(fflush);
  return Fails(Write, CALLER) ? Failed(ENOSPC, EOF) : next(file);
}

int fsync(int file) {
  NEXT(fsync);
  return Fails(Sync, CALLER) ? Failed(EIO, -1) : next(file);
}

int fdatasync(int file) {
  NEXT(fdatasync);
  return Fails(Sync, CALLER) ? Failed(EIO, -1) : next(file);
}

int rename(const char* from, const char* to) {
  NEXT(rename);
  return Fails(Rename, CALLER) ? Failed(EACCES, -1) : next(from, to);
}

int socket(int domain, int type, int protocol) {
  NEXT(socket);
  return Fails(Connect, CALLER) ? Failed(EMFILE, -1) : next(domain, type, protocol);
}

int connect(int socket, const sockaddr* address, socklen_t length) {
  NEXT(connect);
  return Fails(Connect, CALLER) ? Failed(ECONNREFUSED, -1) : next(socket, address, length);
}

ssize_t send(int socket, const void* bytes, std::size_t size, int flags) {
  NEXT(send);
  return Fails(Send, CALLER) ? Failed<ssize_t>(ECONNRESET, -1) : next(socket, bytes, size, flags);
}

ssize_t sendmsg(int socket, const msghdr* message, int flags) {
  NEXT(sendmsg);
  return Fails(Send, CALLER) ? Failed<ssize_t>(ECONNRESET, -1) : next(socket, message, flags);
}

ssize_t recv(int socket, void* bytes, std::size_t size, int flags) {
  NEXT(recv);
  return Fails(Receive, CALLER) ? Failed<ssize_t>(ECONNRESET, -1) : next(socket, bytes, size, flags);
}

ssize_t recvmsg(int socket, msghdr* message, int flags) {
  NEXT(recvmsg);
  return Fails(Receive, CALLER) ? Failed<ssize_t>(ECONNRESET, -1) : next(socket, message, flags);
}

void* malloc(std::size_t size) { return Fails(Memory, CALLER) ? Failed<void*>(ENOMEM, nullptr) : __libc_malloc(size); }

void* calloc(std::size_t number, std::size_t size) {
  return Fails(Memory, CALLER) ? Failed<void*>(ENOMEM, nullptr) : __libc_calloc(number, size);
}

void* realloc(void* memory, std::size_t size) {
  return Fails(Memory, CALLER) ? Failed<void*>(ENOMEM, nullptr) : __libc_realloc(memory, size);
}

// The X server refuses. A lost connection ends the process: Xlib means it to.
#define REPLIES(name)                                                                                               \
  name##_reply_t* name##_reply(xcb_connection_t* connection, name##_cookie_t cookie, xcb_generic_error_t** error) { \
    NEXT(name##_reply);                                                                                             \
    auto* reply = next(connection, cookie, error);                                                                  \
    if (!Fails(X, CALLER)) return reply;                                                                            \
    std::free(reply);                                                                                               \
    return nullptr;                                                                                                 \
  }
REPLIES(xcb_intern_atom)
REPLIES(xcb_get_atom_name)
REPLIES(xcb_get_selection_owner)
REPLIES(xcb_get_property)

int xcb_flush(xcb_connection_t* connection) {
  NEXT(xcb_flush);
  return Fails(X, CALLER) ? 0 : next(connection);
}

}  // extern "C"
#pragma GCC visibility pop

namespace {

// Libraries that are opened with RTLD_DEEPBIND find the C library before this one.
constexpr std::array<std::string_view, 3> kDeeplyBound = {"TessaroTransfers", "libcurl", "libnghttp2"};

struct Replacement {
  const char* name;
  void* function;
};

#define REPLACEMENT(name) \
  Replacement { #name, reinterpret_cast < void*>(name) }
const std::array kReplacements = {
    REPLACEMENT(open),   REPLACEMENT(open64),  REPLACEMENT(fopen),   REPLACEMENT(fopen64), REPLACEMENT(write),
    REPLACEMENT(writev), REPLACEMENT(socket),  REPLACEMENT(connect), REPLACEMENT(send),    REPLACEMENT(sendmsg),
    REPLACEMENT(recv),   REPLACEMENT(recvmsg), REPLACEMENT(malloc),  REPLACEMENT(calloc),  REPLACEMENT(realloc),
};

void Redirect(const ElfW(Rela) * relocations, std::size_t size, const ElfW(Sym) * symbols, const char* names,
              std::uintptr_t base) {
  for (std::size_t i = 0; i < size / sizeof(ElfW(Rela)); ++i) {
    const auto& symbol = symbols[ELF64_R_SYM(relocations[i].r_info)];
    for (const Replacement& each : kReplacements) {
      if (std::strcmp(names + symbol.st_name, each.name) != 0) continue;
      auto* place = reinterpret_cast<void**>(base + relocations[i].r_offset);
      if (*place != dlsym(RTLD_NEXT, each.name)) continue;
      const auto page = reinterpret_cast<std::uintptr_t>(place) & ~std::uintptr_t{4095};
      mprotect(reinterpret_cast<void*>(page), 4096, PROT_READ | PROT_WRITE);
      *place = each.function;
    }
  }
}

int RedirectLibrary(dl_phdr_info* info, std::size_t, void*) {
  if (!Contains(kDeeplyBound, info->dlpi_name)) return 0;
  std::array<std::uintptr_t, DT_NUM> table{};
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    if (info->dlpi_phdr[i].p_type != PT_DYNAMIC) continue;
    const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(info->dlpi_addr + info->dlpi_phdr[i].p_vaddr);
    for (; entry->d_tag != DT_NULL; ++entry) {
      if (entry->d_tag < DT_NUM) table.at(entry->d_tag) = entry->d_un.d_ptr;
    }
  }
  const auto* symbols = reinterpret_cast<const ElfW(Sym)*>(table[DT_SYMTAB]);
  const auto* names = reinterpret_cast<const char*>(table[DT_STRTAB]);
  for (const auto& [relocations, size] : {std::pair(DT_RELA, DT_RELASZ), std::pair(DT_JMPREL, DT_PLTRELSZ)}) {
    Redirect(reinterpret_cast<const ElfW(Rela)*>(table.at(relocations)), table.at(size), symbols, names,
             info->dlpi_addr);
  }
  return 0;
}

void RedirectDeeplyBound() { dl_iterate_phdr(RedirectLibrary, nullptr); }

}  // namespace
