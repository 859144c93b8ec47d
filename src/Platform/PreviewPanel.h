#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

@class NSWindow;

// The panel that shows files. For .mm files.
namespace tessaro::platform {

// Receives the path of the file that was shown last, once, on a later turn of the main queue.
using PreviewsClosed = std::function<void(const std::string& lastPath)>;

// Shows files one after the other over a window, `paths[index]` first, until the user or the end of the window closes
// the panel. There is one panel: it is closed before it shows other files. `paths` is not empty. Main thread only, with
// a window server.
void ShowPreviews(NSWindow* window, const std::vector<std::string>& paths, std::size_t index, PreviewsClosed closed);

}  // namespace tessaro::platform
