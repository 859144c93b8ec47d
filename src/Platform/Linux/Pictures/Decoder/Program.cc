// The program that decodes pictures for the module. Mail may contain images that exploit their decoder, so each job has
// a process of its own, with limits to time and memory.
//
// Jobs come over the socket that is standard input, each with the end of a pipe for the reply. When a job crashes, its
// pipe closes without a reply.

#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vips/vips.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "Platform/Common/FileDescriptor.h"
#include "Platform/Linux/Pictures/Decoder/Jobs.h"
#include "Platform/Linux/Pictures/Decoder/PictureJob.h"
#include "Platform/Linux/Pictures/Decoder/SourceFile.h"

// After vips.h, which the header needs.
#include <vips/vector.h>

namespace tessaro::platform {

namespace {

using namespace std::string_view_literals;

[[maybe_unused]] constexpr rlim_t kJobMemory = rlim_t{2} << 30;
constexpr int kMostThreads = 4;
constexpr int kPreviewNiceness = 5;
constexpr int kSocket = STDIN_FILENO;
constexpr int kSmallJobMilliseconds = 50;

void Limit(__rlimit_resource what, rlim_t most) {
  const rlimit limit{most, most};
  setrlimit(what, &limit);
}

// Before the first byte of the picture is read.
void SetLimits(const PictureJob& job) {
  const itimerval deadline{{}, {job.milliseconds / 1000, job.milliseconds % 1000 * 1000}};
  setitimer(ITIMER_REAL, &deadline, nullptr);
  Limit(RLIMIT_CPU, static_cast<rlim_t>(job.milliseconds / 1000 + 1) * kMostThreads);
  Limit(RLIMIT_CORE, 0);
#ifndef TESSARO_SANITIZED
  // The sanitizers reserve terabytes.
  Limit(RLIMIT_AS, kJobMemory);
#endif
  // The main thread waits for a scaled copy: previews must not take the processor from it.
  if (job.kind == PictureJob::Kind::Preview) static_cast<void>(nice(kPreviewNiceness));
}

struct Received {
  FileDescriptor reply;
  std::optional<PictureJob> job;
  bool isEnd = false;
};

Received Receive() {
  std::array<char, PictureJob::kMostBytes> bytes;
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
  iovec text{bytes.data(), bytes.size()};
  msghdr message{};
  message.msg_iov = &text;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  const ssize_t length = TEMP_FAILURE_RETRY(recvmsg(kSocket, &message, MSG_CMSG_CLOEXEC));
  Received received;
  if (length <= 0) {
    received.isEnd = true;
    return received;
  }
  received.job = PictureJob::Decoded({bytes.data(), static_cast<std::size_t>(length)});
  const cmsghdr* passed = CMSG_FIRSTHDR(&message);
  if (passed == nullptr || passed->cmsg_type != SCM_RIGHTS) return received;
  int descriptor = -1;
  std::memcpy(&descriptor, CMSG_DATA(passed), sizeof descriptor);
  received.reply = FileDescriptor(descriptor);
  return received;
}

void Perform(const PictureJob& job, int reply) {
  SetLimits(job);
  const auto written = job.kind == PictureJob::Kind::Preview ? MakePreview(job) : MakeScaledCopy(job);
  const std::string text = written ? kPictureWritten + *written : kPictureFailed + written.error().message;
  static_cast<void>(write(reply, text.data(), text.size()));
}

void PrepareDecoder() {
  // Loaders that vips itself calls unsafe for foreign files are blocked, except for drawings.
  vips_block_untrusted_set(TRUE);
  vips_operation_block_set("VipsForeignLoadSvg", FALSE);
  // Each process has one job: nothing would be found in the cache.
  vips_cache_set_max(0);
  vips_concurrency_set(std::min(vips_concurrency_get(), kMostThreads));
  // Compiled into pages that forked processes share: only the process of a large picture may enable it.
  vips_vector_set_enabled(FALSE);
}

// An image of our own for rehearsals: a PNG of 2 × 2 black pixels.
constexpr std::string_view kRehearsed =
    "\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\2\0\0\0\2\b\2\0\0\0\xfd\xd4\x9as"
    "\0\0\0\vIDATx\xda\x63`@\6\0\0\x0e\0\1\x3a\x35\4\x56\0\0\0\0IEND\xae\x42`\x82"sv;

VipsImagePtr DecodeRehearsed() {
  FileDescriptor file(memfd_create("rehearsed", MFD_CLOEXEC));
  if (write(file.get(), kRehearsed.data(), kRehearsed.size()) < 0) return nullptr;
  SourceFile source(std::move(file));
  return source.ReadHeader(SourceFile::Missing::Fails) ? source.Decode({1, 1}) : nullptr;
}

enum class Rehearsal : std::uint8_t { Decoding, WholeJob };

// Runs a job, or its first half, on an image of our own. Decoding initialises the classes of vips and its decoder for
// all processes that are forked then. Writing starts threads, which would not survive that.
void Rehearse(Rehearsal rehearsal) {
  const int threads = vips_concurrency_get();
  const VipsImagePtr image = DecodeRehearsed();
  vips_foreign_find_save_target(".png");
  if (image && rehearsal == Rehearsal::WholeJob) {
    void* png = nullptr;
    std::size_t size = 0;
    vips_pngsave_buffer(image.get(), &png, &size, nullptr);
    g_free(png);
  }
  vips_error_clear();
  vips_concurrency_set(threads);
}

bool IsJobWaiting() {
  pollfd next{kSocket, POLLIN, 0};
  return poll(&next, 1, 0) > 0;
}

// In a process of its own: waits for a job, reports that through the pipe `taken`, and performs the job. The pipe
// closes at the job's end.
void TakeJob(const FileDescriptor& taken) {
  // Starts the threads of vips and copies the parent's pages before the job comes.
  if (!IsJobWaiting()) Rehearse(Rehearsal::WholeJob);
  Received received;
  while (!received.isEnd && !(received.job && received.reply)) received = Receive();
  if (received.isEnd) return;
  static_cast<void>(write(taken.get(), "", 1));
  close(kSocket);
  Perform(*received.job, received.reply.get());
}

// Until a small job has ended or another one waits. The preparation of the next process would take a processor from the
// job, which takes no longer than that.
void LeaveProcessorsTo(const FileDescriptor& job) {
  std::array<pollfd, 2> events = {{{kSocket, POLLIN, 0}, {job.get(), 0, 0}}};
  static_cast<void>(poll(events.data(), events.size(), kSmallJobMilliseconds));
}

// Forks a process ahead of each job, so that none has to wait for its process.
int Serve() {
  // The system removes the ended processes of jobs.
  std::signal(SIGCHLD, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
  for (bool isWarm = false;;) {
    // The first job doesn't wait for it.
    if (!isWarm && !IsJobWaiting()) {
      Rehearse(Rehearsal::Decoding);
      isWarm = true;
    }
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return 1;
    const FileDescriptor hasTaken(ends[0]);
    FileDescriptor taken(ends[1]);
    const pid_t process = fork();
    if (process == 0) {
      TakeJob(taken);
      // Without the libraries' exit handlers, which would only take time.
      _exit(0);
    }
    taken = FileDescriptor();
    char byte = 0;
    // A process that ends without a job has seen the end of the socket.
    if (process < 0 || TEMP_FAILURE_RETRY(read(hasTaken.get(), &byte, 1)) != 1) return 0;
    LeaveProcessorsTo(hasTaken);
  }
}

}  // namespace

}  // namespace tessaro::platform

int main(int, char** argv) {
  // The short-lived threads of a job would each reserve and fault in an arena of their own.
  mallopt(M_ARENA_MAX, 1);
  // vips looks for modules below this folder: see LoadDecoderFor().
  setenv("VIPSHOME", "/nonexistent", 1);
  if (VIPS_INIT(argv[0]) != 0) return 1;
  tessaro::platform::PrepareDecoder();
  return tessaro::platform::Serve();
}
