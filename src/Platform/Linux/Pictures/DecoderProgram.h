#pragma once

#include <sys/types.h>

#include "Base/Result.h"
#include "Platform/Common/FileDescriptor.h"
#include "Platform/Linux/Pictures/Decoder/PictureJob.h"

namespace tessaro::platform {

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

// The reply to a job as read from its pipe until the end.
[[nodiscard]] Result<std::string> ParsePictureReply(const std::string& text);

}  // namespace tessaro::platform
