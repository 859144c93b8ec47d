#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Base/Result.h"

namespace tessaro::platform {

struct FileRequest;

// A code of the portal's.
inline constexpr int kEndedOtherwise = 2;

// One file dialog of the desktop's, shown by its portal. Main thread only; nothing throws.
class FilePortal {
 public:
  // The paths that the user chose, none when the user cancelled. Fails when the portal shows no dialog or goes away;
  // with the code kEndedOtherwise also when the user closes the dialog without its buttons.
  using Ended = std::function<void(const Result<std::vector<std::string>>& paths)>;

  // Requests a dialog over the window whose portal handle is `parent`. `ended` is called once, on a later turn of the
  // main queue, unless the object is destroyed before, which closes the dialog.
  FilePortal(const std::string& parent, const FileRequest& request, Ended ended) noexcept;
  FilePortal(const FilePortal&) = delete;
  FilePortal& operator=(const FilePortal&) = delete;
  ~FilePortal();

 private:
  struct Dialog;
  std::shared_ptr<Dialog> dialog_;
};

// The request's name for a new file without slashes and leading dots. A name without an extension of the first filter
// gets that filter's first.
[[nodiscard]] std::string SuggestedName(const FileRequest& request);

}  // namespace tessaro::platform
