// The program that decodes pictures for the module. What comes with mail may be made to break its reader: it is decoded
// in a process of its own, one for each job, with limits to its time and memory.
//
// Jobs come over the socket that is standard input, each with the end of a pipe for its answer. A pipe that is closed
// without one tells of a job that has broken its process.

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vips/vips.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "Platform/Common/FileDescriptor.h"
#include "Platform/Linux/Pictures/Decoder/Picture.h"
#include "Platform/Linux/Pictures/Decoder/PictureJob.h"

namespace tessaro::platform {

namespace {

constexpr unsigned kJobSeconds = 30;
[[maybe_unused]] constexpr rlim_t kJobMemory = rlim_t{4} << 30;
constexpr int kSocket = STDIN_FILENO;

void Limit(__rlimit_resource what, rlim_t most) {
  const rlimit limit{most, most};
  setrlimit(what, &limit);
}

void SetLimits() {
  alarm(kJobSeconds);
  Limit(RLIMIT_CORE, 0);
#ifndef TESSARO_SANITIZED
  // The sanitizers reserve terabytes.
  Limit(RLIMIT_AS, kJobMemory);
#endif
}

struct Received {
  FileDescriptor answer;
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
  received.answer = FileDescriptor(descriptor);
  return received;
}

void Perform(const PictureJob& job, int answer) {
  SetLimits();
  const WrittenPicture written = job.kind == PictureJob::Kind::Preview ? MakePreview(job) : MakeScaledCopy(job);
  const std::string text = written.path.empty() ? kPictureFailed + written.failure : kPictureWritten + written.path;
  static_cast<void>(write(answer, text.data(), text.size()));
}

// Loaders that are known to read whatever they are given stay closed, but for those that mail needs.
void ChooseLoaders() {
  vips_block_untrusted_set(TRUE);
  vips_operation_block_set("VipsForeignLoadSvg", FALSE);
  vips_operation_block_set("VipsForeignLoadPdf", FALSE);
  // Every job is the only one of its process.
  vips_cache_set_max(0);
}

int Serve() {
  // Nobody waits for the jobs' processes.
  std::signal(SIGCHLD, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
  for (;;) {
    const Received received = Receive();
    if (received.isEnd) return 0;
    if (!received.job || !received.answer) continue;
    if (fork() != 0) continue;
    close(kSocket);
    Perform(*received.job, received.answer.get());
    // The libraries' threads and exit handlers have nothing to put in order.
    _exit(0);
  }
}

}  // namespace

}  // namespace tessaro::platform

int main(int, char** argv) {
  // Another copy of the library in the client's process leaves the name of its own folder here, and this one would miss
  // the formats that it loads from its own.
  unsetenv("VIPSHOME");
  if (VIPS_INIT(argv[0]) != 0) return 1;
  tessaro::platform::ChooseLoaders();
  return tessaro::platform::Serve();
}
