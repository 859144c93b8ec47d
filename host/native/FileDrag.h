#pragma once

#include <string>
#include <vector>

enum class DragOutcome {
  kAccepted,
  kRefused,
  kNoTarget,  // no window there takes drags
  kNoAnswer,  // the window's application doesn't answer
  kNoDisplay,
};

// Drags files to the point (x, y) of the screen and drops them there, as a file manager would. Blocks until the window
// under that point has answered, for some seconds at most; so that window must be another process's.
DragOutcome DragFiles(int x, int y, const std::vector<std::string>& paths);
