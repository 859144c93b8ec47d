#include "Platform/Common/CrashRecord.h"

#include <execinfo.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string_view>

#include "Base/Lifetime.h"
#include "Platform/Common/CrashedThread.h"

// Everything that runs after the crash must be async-signal-safe: system calls, and memory that was allocated before.
// The unwinder is safe since glibc 2.35, where it finds its tables without a lock; with older ones the alarm ends it.

namespace tessaro::platform {

namespace {

constexpr std::array kSignals = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS};
constexpr std::size_t kStackSize = 128 * 1024;
constexpr std::size_t kSmallestStack = 32 * 1024;
constexpr int kMostFrames = 128;
constexpr unsigned kLongestUnwinding = 10;  // seconds
constexpr timespec kMoment = {0, 50'000'000};

struct Crash {
  int signal;
  siginfo_t* information;
  void* context;
};

// Writes lines through a small buffer. Write errors are ignored.
class Writer {
 public:
  explicit Writer(int file) : file_(file) {}
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() { Flush(); }

  void Text(std::string_view text) {
    for (const char c : text) {
      if (length_ == buffer_.size()) Flush();
      buffer_[length_++] = c;
    }
  }

  void Line(std::string_view name, std::string_view text) {
    Text(name);
    Text(" ");
    Text(text);
    Text("\n");
  }

  void Line(std::string_view name, std::int64_t number) {
    const bool isNegative = number < 0;
    const auto magnitude = static_cast<std::uint64_t>(number);
    Number(name, isNegative ? "-" : "", isNegative ? 0 - magnitude : magnitude, 10);
  }

  void Address(std::string_view name, std::uint64_t address) { Number(name, "0x", address, 16); }

  void Flush() {
    for (std::size_t done = 0; done < length_;) {
      const ssize_t written = write(file_, buffer_.data() + done, length_ - done);
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) break;
      done += static_cast<std::size_t>(written);
    }
    length_ = 0;
  }

 private:
  void Number(std::string_view name, std::string_view prefix, std::uint64_t number, unsigned base) {
    std::array<char, 24> digits;
    std::size_t first = digits.size();
    do {
      digits[--first] = "0123456789abcdef"[number % base];
      number /= base;
    } while (number > 0);
    Text(name);
    Text(" ");
    Text(prefix);
    Text({digits.data() + first, digits.size() - first});
    Text("\n");
  }

  const int file_;
  std::size_t length_ = 0;
  std::array<char, 1024> buffer_;
};

// Ends the process when unwinding hangs.
class UnwindAlarm {
 public:
  UnwindAlarm() {
    struct sigaction deadly {};
    deadly.sa_handler = SIG_DFL;
    sigaction(SIGALRM, &deadly, &previous_);
    alarm(kLongestUnwinding);
  }
  UnwindAlarm(const UnwindAlarm&) = delete;
  UnwindAlarm& operator=(const UnwindAlarm&) = delete;
  ~UnwindAlarm() {
    alarm(0);
    sigaction(SIGALRM, &previous_, nullptr);
  }

 private:
  struct sigaction previous_ {};
};

void WriteReason(Writer& writer, const Crash& crash) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  std::array<char, 64> name{};
  ReadThreadName(name);
  writer.Line("signal", crash.signal);
  writer.Line("code", crash.information->si_code);
  // si_addr is valid only for kernel-raised signals; for kill() the union holds the sender's pid.
  if (crash.information->si_code > 0) {
    writer.Address("address", reinterpret_cast<std::uintptr_t>(crash.information->si_addr));
  }
  writer.Line("time", now.tv_sec * 1000 + now.tv_nsec / 1'000'000);
  writer.Line("process", getpid());
  writer.Line("thread", ThreadIdentifier());
  writer.Line("name", name.data());
}

void WriteFrames(Writer& writer, const Crash& crash) {
  const std::uint64_t pc = ProgramCounterOf(crash.context);
  writer.Address("frame", pc);
  writer.Flush();
  std::array<void*, kMostFrames> frames;
  const UnwindAlarm alarm;
  const int count = backtrace(frames.data(), kMostFrames);
  // Skip the handler's own frames.
  int crashed = 0;
  while (crashed < count && reinterpret_cast<std::uintptr_t>(frames[crashed]) != pc) ++crashed;
  for (int i = crashed + 1; i < count; ++i) {
    writer.Address("frame", reinterpret_cast<std::uintptr_t>(frames[i]));
  }
}

// One for the process.
class CrashHandler {
 public:
  CrashHandler(int record, CrashReporter::FaultClaim claim) : record_(record), claim_(claim) {}

  [[nodiscard]] bool Install() {
    // backtrace() loads libgcc on first use; do it now, not inside the handler.
    std::array<void*, 1> frame;
    backtrace(frame.data(), 1);
    PrepareStack();
    PrepareMemoryMap();
    struct sigaction action {};
    action.sa_sigaction = OnSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    // A crash of the handler itself ends the process.
    sigfillset(&action.sa_mask);
    sigdelset(&action.sa_mask, SIGALRM);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      if (sigaction(kSignals[i], &action, &previous_[i]) != 0) return false;
    }
    return true;
  }

  static std::atomic<CrashHandler*> current;

 private:
  static void OnSignal(int signal, siginfo_t* information, void* context) {
    const int error = errno;
    current.load()->Handle({signal, information, context});
    errno = error;
  }

  void Handle(const Crash& crash) {
    if (claim_ != nullptr && claim_(crash.signal, crash.information, crash.context)) return;
    // A forked process has inherited the handler, but the record is its parent's.
    if (getpid() == process_) Record(crash);
    LeaveToOthers(crash);
  }

  // The first thread that crashes is recorded; others that crash wait until the record is complete.
  void Record(const Crash& crash) {
    if (isRecording_.exchange(true)) {
      for (unsigned i = 0; i < kLongestUnwinding * 20 && !isRecorded_; ++i) nanosleep(&kMoment, nullptr);
      return;
    }
    {
      Writer writer(record_);
      WriteReason(writer, crash);
      WriteFrames(writer, crash);
      writer.Text("maps\n");
      writer.Flush();
      WriteMemoryMap(record_);
    }
    isRecorded_ = true;
  }

  // A fault is raised again as soon as the handler returns; a signal that was sent has to be sent again.
  void LeaveToOthers(const Crash& crash) {
    const auto& [signal, information, context] = crash;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      if (kSignals[i] == signal) sigaction(signal, &previous_[i], nullptr);
    }
    const bool isFault = information->si_code > 0 && signal != SIGTRAP && signal != SIGSYS;
    if (!isFault) SendAgain(signal, *information);
  }

  // A stack that has overflowed has no room for the handler. The host may have set a signal stack already.
  static void PrepareStack() {
    stack_t present{};
    if (sigaltstack(nullptr, &present) == 0 && (present.ss_flags & SS_DISABLE) == 0 &&
        present.ss_size >= kSmallestStack) {
      return;
    }
    void* memory = mmap(nullptr, kStackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return;
    stack_t stack{};
    stack.ss_sp = memory;
    stack.ss_size = kStackSize;
    sigaltstack(&stack, nullptr);
  }

  const int record_;
  const CrashReporter::FaultClaim claim_;
  const pid_t process_ = getpid();
  std::array<struct sigaction, kSignals.size()> previous_{};
  std::atomic<bool> isRecording_ = false;
  std::atomic<bool> isRecorded_ = false;
};

std::atomic<CrashHandler*> CrashHandler::current = nullptr;

}  // namespace

bool HandleCrashes(int record, CrashReporter::FaultClaim claim) noexcept {
  static Forever<CrashHandler> handler(record, claim);
  CrashHandler::current = &*handler;
  return handler->Install();
}

}  // namespace tessaro::platform
