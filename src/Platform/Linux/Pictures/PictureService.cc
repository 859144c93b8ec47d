#include "Platform/Linux/Pictures/PictureService.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <system_error>

#include "Platform/Common/FileDescriptor.h"
#include "Platform/Linux/Base/OwnDirectory.h"
#include "Platform/Previews.h"

extern char** environ;

namespace tessaro::platform {

namespace {

using namespace std::chrono_literals;

constexpr char kProgram[] = "TessaroPictures";
// The program ends its jobs a little earlier.
constexpr auto kPatience = 35s;

std::string LastError(const char* what) { return std::string(what) + ": " + std::strerror(errno); }

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

// The program while it runs.
class Program {
 public:
  // Never destroyed: a job may be under way when the process ends. The program ends with its socket.
  static Program& Shared() {
    static auto& program = *new Program();
    return program;
  }

  // Empty when the job has been handed over, with the end of a pipe for its answer.
  [[nodiscard]] std::string HandOver(const std::string& job, int answer) {
    const std::lock_guard lock(mutex_);
    // One that has ended meanwhile, for whatever reason, is started anew.
    if (socket_ && Send(job, answer)) return {};
    if (std::string failure = Start(); !failure.empty()) return failure;
    return Send(job, answer) ? std::string() : LastError("the job could not be handed over");
  }

 private:
  Program() = default;

  [[nodiscard]] std::string Start() {
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
    return program + ": " + std::strerror(error);
  }

  [[nodiscard]] bool Send(const std::string& job, int answer) const {
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof answer)> control{};
    iovec text{const_cast<char*>(job.data()), job.size()};
    msghdr message{};
    message.msg_iov = &text;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* passed = CMSG_FIRSTHDR(&message);
    passed->cmsg_level = SOL_SOCKET;
    passed->cmsg_type = SCM_RIGHTS;
    passed->cmsg_len = CMSG_LEN(sizeof answer);
    std::memcpy(CMSG_DATA(passed), &answer, sizeof answer);
    return TEMP_FAILURE_RETRY(sendmsg(socket_.get(), &message, MSG_NOSIGNAL)) >= 0;
  }

  std::mutex mutex_;
  FileDescriptor socket_;
  pid_t process_ = 0;
};

// All that comes through the pipe until it is closed. What takes longer than anybody waits is left out.
std::string ReadToEnd(int pipe) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  std::string text;
  std::array<char, 4096> piece;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd waited{pipe, POLLIN, 0};
    if (left <= 0ms || TEMP_FAILURE_RETRY(poll(&waited, 1, static_cast<int>(left.count()))) <= 0) return {};
    const ssize_t length = TEMP_FAILURE_RETRY(read(pipe, piece.data(), piece.size()));
    if (length <= 0) return text;
    text.append(piece.data(), static_cast<std::size_t>(length));
  }
}

// The program has a working directory of its own.
PictureJob AtHome(PictureJob job) {
  std::error_code error;
  for (std::string* path : {&job.source, &job.target}) {
    if (!path->empty()) *path = std::filesystem::absolute(*path, error).native();
  }
  return job;
}

WrittenPicture Answer(const std::string& text) {
  if (text.empty()) return {{}, "it takes too long, or breaks its reader"};
  if (text.front() == kPictureWritten) return {text.substr(1), {}};
  return {{}, text.substr(1)};
}

}  // namespace

WrittenPicture HaveDone(const PictureJob& job) noexcept {
  if ((job.source + job.target).find('\0') != std::string::npos) return {{}, "a path has a NUL character"};
  const std::string encoded = AtHome(job).Encoded();
  if (encoded.size() > PictureJob::kMostBytes) return {{}, "a path is too long"};
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return {{}, LastError("pipe")};
  const FileDescriptor answer(ends[0]);
  {
    const FileDescriptor theirs(ends[1]);
    if (std::string failure = Program::Shared().HandOver(encoded, theirs.get()); !failure.empty()) {
      return {{}, failure};
    }
  }
  return Answer(ReadToEnd(answer.get()));
}

WrittenPicture ScaleImage(const std::string& source, const std::string& target, int maxWidth, int maxHeight) noexcept {
  return HaveDone({PictureJob::Kind::Scale, maxWidth, maxHeight, source, target});
}

WrittenPicture WritePreview(const std::string& source, int size, const std::string& target) noexcept {
  return HaveDone({PictureJob::Kind::Preview, size, size, source, target});
}

}  // namespace tessaro::platform
