#pragma once

#include <functional>
#include <string>
#include <vector>

#ifdef __OBJC__
@class NSWindow;
#endif

// The system's dialog for choosing files.
namespace tessaro::platform {

struct FileFilter {
  std::string name;                     // shown to the user
  std::vector<std::string> extensions;  // without their dots, in any case; none: everything
};

// Texts are UTF-8; where one is empty, the system's own stands there. A dialog that has no place for one of them leaves
// it out.
struct FileRequest {
  enum class Kind { Open, Save };

  Kind kind = Kind::Open;
  std::string title;
  std::string message;
  std::string button;
  std::string folder;               // where to begin; the folder used last when this one doesn't exist
  std::string name;                 // for Save, a suggestion; it never leads out of the folder, whatever it contains
  std::vector<FileFilter> filters;  // the first one applies to begin with
  bool choosesFiles = true;         // these three are for Open
  bool choosesFolders = false;      // a system may choose only files, where both are wanted
  bool allowsSeveral = false;
  bool showsHidden = false;
};

// Absolute paths; none when the user chose nothing.
using FileAnswer = std::function<void(const std::vector<std::string>& paths)>;

#ifdef __OBJC__

// Shows the dialog over `window` and returns at once. `answer` is called exactly once, on a later turn of the main
// queue. Nothing is chosen also when the window is closed, and when the window has such a dialog already. The user
// confirms overwriting. Main thread only, with a window server.
void AskForFiles(NSWindow* window, FileRequest request, FileAnswer answer);

#endif

}  // namespace tessaro::platform
