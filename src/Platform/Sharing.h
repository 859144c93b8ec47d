#pragma once

#include <string>
#include <vector>

@class NSWindow;

// Handing files to other applications. For .mm files.
namespace tessaro::platform {

// In points of the window's content, from its upper left corner.
struct ContentRectangle {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

// Offers the applications and services that take all of these files, beside `rectangle`, and hands the files to the one
// that the user chooses. Returns at once: the choice opens on a later turn of the main queue, unless the window is
// hidden by then. A choice that can't be started is logged. `paths` are absolute, UTF-8. Main thread only.
void ShowSharingPicker(NSWindow* window, const ContentRectangle& rectangle, std::vector<std::string> paths);

}  // namespace tessaro::platform
