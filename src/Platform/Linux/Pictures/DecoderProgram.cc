#include "Platform/Linux/Pictures/DecoderProgram.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "Platform/Linux/Base/BaseDirectories.h"

extern char** environ;

namespace tessaro::platform {

namespace {

constexpr char kProgram[] = "TessaroPictures";

tl::unexpected<Failure> LastError(const std::string& call) { return Fail(errno, call + ": " + std::strerror(errno)); }

class SpawnActions {
 public:
  SpawnActions() { posix_spawn_file_actions_init(&actions_); }
  SpawnActions(const SpawnActions&) = delete;
  ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }

  posix_spawn_file_actions_t* get() { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

int Spawn(const std::string& program, int socket, pid_t& process) {
  SpawnActions actions;
  posix_spawn_file_actions_adddup2(actions.get(), socket, STDIN_FILENO);
  posix_spawn_file_actions_addopen(actions.get(), STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(actions.get(), STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addclosefrom_np(actions.get(), STDERR_FILENO + 1);
  std::array<char*, 2> words = {const_cast<char*>(program.c_str()), nullptr};
  return posix_spawn(&process, program.c_str(), actions.get(), nullptr, words.data(), environ);
}

// The program has a working directory of its own.
PictureJob WithAbsolutePaths(PictureJob job) {
  std::error_code error;
  for (std::string* path : {&job.source, &job.target}) {
    if (!path->empty()) *path = std::filesystem::absolute(*path, error).native();
  }
  return job;
}

}  // namespace

Result<FileDescriptor> DecoderProgram::Begin(const PictureJob& job) {
  if ((job.source + job.target).find('\0') != std::string::npos) return Fail("a path contains a NUL character");
  const std::string encoded = WithAbsolutePaths(job).Encoded();
  if (encoded.size() > PictureJob::kMostBytes) return Fail("a path is too long");
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return LastError("pipe2");
  FileDescriptor reply(ends[0]);
  const FileDescriptor theirs(ends[1]);
  fcntl(reply.get(), F_SETFL, O_NONBLOCK);
  if (socket_ && Send(encoded, theirs.get())) return reply;
  // The first job, or the program has ended since the last one.
  if (const auto started = Start(); !started) return tl::unexpected(started.error());
  if (!Send(encoded, theirs.get())) return LastError("sendmsg to the decoder");
  return reply;
}

void DecoderProgram::Kill() {
  if (process_ > 0) kill(process_, SIGKILL);
  socket_ = FileDescriptor();
}

Result<void> DecoderProgram::Start() {
  if (process_ > 0) waitpid(process_, nullptr, WNOHANG);
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) return LastError("socketpair");
  socket_ = FileDescriptor(ends[0]);
  const FileDescriptor theirs(ends[1]);
  const std::string program = OwnDirectory() / kProgram;
  const int error = Spawn(program, theirs.get(), process_);
  if (error == 0) return {};
  socket_ = FileDescriptor();
  process_ = 0;
  return Fail(error, program + ": " + std::strerror(error));
}

bool DecoderProgram::Send(const std::string& job, int reply) const {
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof reply)> control{};
  iovec text{const_cast<char*>(job.data()), job.size()};
  msghdr message{};
  message.msg_iov = &text;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  cmsghdr* passed = CMSG_FIRSTHDR(&message);
  passed->cmsg_level = SOL_SOCKET;
  passed->cmsg_type = SCM_RIGHTS;
  passed->cmsg_len = CMSG_LEN(sizeof reply);
  std::memcpy(CMSG_DATA(passed), &reply, sizeof reply);
  return TEMP_FAILURE_RETRY(sendmsg(socket_.get(), &message, MSG_NOSIGNAL | MSG_DONTWAIT)) >= 0;
}

Result<std::string> ParsePictureReply(const std::string& text) {
  if (text.empty()) return Fail("the decoder crashed, or exceeded its limits of time or memory");
  if (text.front() == kPictureWritten) return text.substr(1);
  return Fail(text.substr(1));
}

}  // namespace tessaro::platform
