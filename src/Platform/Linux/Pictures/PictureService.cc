// The picture jobs of this process, seen from its main thread: the pipes of their replies are watched by the event
// loop, so that no job holds a thread.

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <deque>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/UvHandle.h"
#include "Platform/Common/FileDescriptor.h"
#include "Platform/Linux/Base/Paths.h"
#include "Platform/Linux/Pictures/Decoder/PictureJob.h"
#include "Platform/MainQueue.h"
#include "Platform/Pictures.h"

extern char** environ;

namespace tessaro::platform {

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

// The decoder ends its jobs a little earlier than this process stops waiting.
constexpr milliseconds kGrace = 200ms;
constexpr milliseconds kLongestWait = 2s;
constexpr milliseconds kLongestJob = 10s;
// A job that takes longer no longer counts as quick, and lets the next one begin.
constexpr milliseconds kQuick = 1s;
constexpr std::size_t kMostQuick = 4;
constexpr std::size_t kMostJobs = 8;

// ---- The decoder

constexpr char kProgram[] = "TessaroPictures";
// A path, or a reason that names one.
constexpr std::size_t kLongestReply = 2 * PictureJob::kMostBytes;

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

// TessaroPictures, the program beside the module that decodes pictures: started with its first job, started again when
// it has ended, and ended by the end of this process. Main thread only.
class DecoderProgram {
 public:
  // Hands a job over, and returns the end of a pipe for the reply, which doesn't block. The pipe closes without a reply
  // when the job crashes or exceeds its limits.
  [[nodiscard]] Result<FileDescriptor> Begin(const PictureJob& job);

  // Ends a program that hangs. Jobs under way are processes of their own, and go on.
  void Kill();

 private:
  [[nodiscard]] Result<void> Start();
  [[nodiscard]] bool Send(const std::string& job, int reply) const;

  FileDescriptor socket_;
  pid_t process_ = 0;
};

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

// The reply to a job. The job may be in the hands of its picture: it could send without end.
class Reply {
 public:
  explicit Reply(FileDescriptor pipe) : pipe_(std::move(pipe)) {}

  [[nodiscard]] int descriptor() const { return pipe_.get(); }

  // Reads what has come, or a part of it. False when the reply is complete.
  [[nodiscard]] bool Read() {
    std::array<char, 4096> piece;
    const ssize_t length = TEMP_FAILURE_RETRY(read(pipe_.get(), piece.data(), piece.size()));
    if (length > 0) text_.append(piece.data(), static_cast<std::size_t>(length));
    return length > 0 ? text_.size() <= kLongestReply : length < 0 && errno == EAGAIN;
  }

  [[nodiscard]] Result<std::string> Path() const {
    if (text_.empty()) return Fail("the decoder crashed, or exceeded its limits of time or memory");
    if (text_.size() > kLongestReply) return Fail("the decoder's reply is too long");
    if (text_.front() == kPictureWritten) return text_.substr(1);
    return Fail(text_.substr(1));
  }

 private:
  FileDescriptor pipe_;
  std::string text_;
};

// ---- Jobs

class PictureService;

// A job under way.
class RunningJob {
 public:
  RunningJob(PictureService& service, FileDescriptor reply, PictureWritten written)
      : service_(service), reply_(std::move(reply)), written_(std::move(written)) {}

  [[nodiscard]] bool isQuick() const { return isQuick_; }

  // False when the event loop can't watch the job.
  [[nodiscard]] bool Watch();

 private:
  void Read();
  void TimePasses();
  void End(const Result<std::string>& path);

  PictureService& service_;
  Reply reply_;
  PictureWritten written_;
  bool isQuick_ = true;
  UvHandle<uv_poll_t> poll_;
  UvHandle<uv_timer_t> timer_;
};

void Deliver(const PictureWritten& written, const Result<std::string>& path) {
  MainQueue::Shared().Post([written, path] { written(path); });
}

class PictureService {
 public:
  static constexpr EndStage kEnd = EndStage::Services;

  static PictureService& Shared() {
    static Forever<PictureService> service;
    return *service;
  }

  [[nodiscard]] Result<std::string> Wait(PictureJob job);
  void Enqueue(PictureJob job, PictureWritten written);
  void Remove(const RunningJob& job);
  void StartWaiting();
  void KillProgram() { program_.Kill(); }
  void Close();

 private:
  struct WaitingJob {
    PictureJob job;
    PictureWritten written;
  };

  [[nodiscard]] bool HasRoom() const;
  void Start(const WaitingJob& next);

  DecoderProgram program_;
  std::deque<WaitingJob> waiting_;
  std::vector<std::unique_ptr<RunningJob>> running_;
};

bool RunningJob::Watch() {
  poll_ = MakeUvHandle<uv_poll_t>(this, uv_poll_init, reply_.descriptor());
  timer_ = MakeUvHandle<uv_timer_t>(this, uv_timer_init);
  if (!poll_ || !timer_) return false;
  uv_timer_start(
      timer_.get(), [](uv_timer_t* timer) { OwnerOf<RunningJob>(timer).TimePasses(); }, kQuick.count(),
      (kLongestJob - kQuick).count());
  return uv_poll_start(poll_.get(), UV_READABLE | UV_DISCONNECT,
                       [](uv_poll_t* poll, int, int) { OwnerOf<RunningJob>(poll).Read(); }) == 0;
}

void RunningJob::Read() {
  if (!reply_.Read()) End(reply_.Path());
}

void RunningJob::TimePasses() {
  if (std::exchange(isQuick_, false)) return service_.StartWaiting();
  service_.KillProgram();
  End(Fail("the decoder does not answer"));
}

// This object is gone afterwards.
void RunningJob::End(const Result<std::string>& path) {
  Deliver(written_, path);
  service_.Remove(*this);
}

Result<std::string> PictureService::Wait(PictureJob job) {
  const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
  job.milliseconds = static_cast<int>((kLongestWait - kGrace).count());
  auto pipe = program_.Begin(job);
  if (!pipe) return tl::unexpected(pipe.error());
  Reply reply(std::move(*pipe));
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left <= 0ms) {
      program_.Kill();
      return Fail("the decoder does not answer");
    }
    pollfd ready{reply.descriptor(), POLLIN, 0};
    if (poll(&ready, 1, static_cast<int>(left.count())) > 0 && !reply.Read()) return reply.Path();
  }
}

void PictureService::Enqueue(PictureJob job, PictureWritten written) {
  job.milliseconds = static_cast<int>((kLongestJob - kGrace).count());
  waiting_.push_back({std::move(job), std::move(written)});
  StartWaiting();
}

bool PictureService::HasRoom() const {
  const auto quick = std::ranges::count_if(running_, [](const auto& job) { return job->isQuick(); });
  return static_cast<std::size_t>(quick) < kMostQuick && running_.size() < kMostJobs;
}

void PictureService::StartWaiting() {
  while (!waiting_.empty() && HasRoom()) {
    const WaitingJob next = std::move(waiting_.front());
    waiting_.pop_front();
    Start(next);
  }
}

void PictureService::Start(const WaitingJob& next) {
  auto reply = program_.Begin(next.job);
  if (!reply) return Deliver(next.written, tl::unexpected(reply.error()));
  auto job = std::make_unique<RunningJob>(*this, std::move(*reply), next.written);
  if (!job->Watch()) return Deliver(next.written, Fail("the event loop can't watch the decoder"));
  running_.push_back(std::move(job));
}

void PictureService::Remove(const RunningJob& ended) {
  std::erase_if(running_, [&ended](const auto& job) { return job.get() == &ended; });
  StartWaiting();
}

void PictureService::Close() {
  waiting_.clear();
  running_.clear();
}

}  // namespace

Result<std::string> ScaleImage(const ImageCopy& copy) noexcept {
  return PictureService::Shared().Wait(
      {PictureJob::Kind::Scale, copy.maxWidth, copy.maxHeight, 0, copy.source, copy.target});
}

void ScaleImage(const ImageCopy& copy, PictureWritten written) noexcept {
  PictureService::Shared().Enqueue(
      {PictureJob::Kind::Scale, copy.maxWidth, copy.maxHeight, 0, copy.source, copy.target}, std::move(written));
}

void WritePreview(const std::string& source, int size, const std::string& target, PictureWritten written) noexcept {
  PictureService::Shared().Enqueue({PictureJob::Kind::Preview, size, size, 0, source, target}, std::move(written));
}

}  // namespace tessaro::platform
