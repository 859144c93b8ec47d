#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Base/Result.h"

namespace tessaro::platform {

struct FileRequest;

// One file dialog of the desktop's, shown by its portal. Main thread only; nothing throws.
class FilePortal {
 public:
  // The paths that the user chose, none when the dialog was cancelled. A failure when the portal doesn't show a dialog,
  // or went away with it.
  using Ended = std::function<void(const Result<std::vector<std::string>>& paths)>;

  // Asks the portal for a dialog over the window whose portal handle is `parent`. `ended` is called once, on a later
  // turn of the main queue, and not after the destruction, which takes the dialog off the screen.
  FilePortal(const std::string& parent, const FileRequest& request, Ended ended) noexcept;
  FilePortal(const FilePortal&) = delete;
  FilePortal& operator=(const FilePortal&) = delete;
  ~FilePortal();

 private:
  struct Dialog;
  std::shared_ptr<Dialog> dialog_;
};

}  // namespace tessaro::platform
