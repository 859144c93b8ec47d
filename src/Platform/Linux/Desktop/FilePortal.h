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

// The paths that the user chose, none when the user cancelled. Fails when the portal shows no dialog or goes away; with
// the code kEndedOtherwise also when the user closes the dialog without its buttons.
using PortalAnswer = std::function<void(const Result<std::vector<std::string>>& paths)>;

// Requests a dialog of the desktop's over the window whose portal handle is `parent`. `answer` is called once, on a
// later turn of the main queue, unless the result, which stands for the dialog, is destroyed before: that closes the
// dialog. Main thread only; nothing throws.
[[nodiscard]] std::shared_ptr<void> AskPortal(const std::string& parent, const FileRequest& request,
                                              PortalAnswer answer) noexcept;

// The request's name for a new file without slashes and leading dots. A name without an extension of the first filter
// gets that filter's first.
[[nodiscard]] std::string SuggestedName(const FileRequest& request);

}  // namespace tessaro::platform
