#pragma once

#include <filesystem>
#include <string>

#include "Base/UvHandle.h"
#include "Platform/Common/FileDescriptor.h"
#include "Platform/Linux/Recording/DisplayArea.h"
#include "Platform/ScreenRecording.h"

namespace tessaro::platform {

// The program that records the X screen.
inline constexpr char kRecorderProgram[] = "ffmpeg";

// A process of that program. It writes a hidden file beside the film, which becomes the film when it is complete.
class Recorder final : public ScreenRecording {
 public:
  Recorder(std::filesystem::path film, Ended ended);
  ~Recorder() override;

  [[nodiscard]] Result<void> Begin(const PixelArea& area);
  void Stop() noexcept override;

 private:
  [[nodiscard]] Result<void> Spawn(const PixelArea& area, const FileDescriptor& errors);
  [[nodiscard]] Result<void> Complete() const;
  [[nodiscard]] bool HasIndex() const;
  [[nodiscard]] std::string Messages() const;
  void Discard() const;
  void End();

  std::filesystem::path film_;
  std::filesystem::path part_;
  Ended ended_;
  FileDescriptor messages_;
  UvHandle<uv_process_t> process_;
  bool isRunning_ = false;
};

}  // namespace tessaro::platform
