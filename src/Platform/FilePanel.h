#pragma once

#include <functional>
#include <string>
#include <vector>

@class NSWindow;

// The panel in which a person chooses files. For .mm files.
namespace tessaro::platform {

struct FileFilter {
  std::string name;                     // as people know it
  std::vector<std::string> extensions;  // without their dots, in any case; none: everything
};

// Texts are UTF-8; where one is empty, the system's own stands there.
struct FileRequest {
  enum class Kind { Open, Save };

  Kind kind = Kind::Open;
  std::string title;
  std::string message;
  std::string button;
  std::string folder;               // where to begin; where that is no folder, it is the one that was chosen in last
  std::string name;                 // for Save, a suggestion; it never leads out of the folder, whatever it contains
  std::vector<FileFilter> filters;  // of which the first one counts to begin with
  bool choosesFiles = true;         // these three are for Open
  bool choosesFolders = false;
  bool allowsSeveral = false;
  bool showsHidden = false;
};

// Absolute paths; none when the person chose nothing.
using FileAnswer = std::function<void(const std::vector<std::string>& paths)>;

// Shows the panel over `window` and returns at once: the application goes on meanwhile. `answer` is called exactly
// once, on a later turn of the main queue. Nothing is chosen also when either window is closed, and when the window
// has such a panel already, which then comes to the front. Saving in the place of a file is confirmed by the person.
// Main thread only, with a window server.
void AskForFiles(NSWindow* window, FileRequest request, FileAnswer answer);

}  // namespace tessaro::platform
