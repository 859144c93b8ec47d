#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace tessaro::platform {

enum class DragEnd {
  kDropped,   // the target has taken the data
  kRefused,   // nobody there wants it
  kNoAnswer,  // the target hangs
};

// Drags data to other programs' windows by the XDND protocol, while the application follows the mouse. There is one
// drag at a time in a process. Main thread only; nothing here waits for other programs.
class DragSource {
 public:
  using Contents = std::map<std::string, std::string>;  // by target: names of MIME types

  // Nothing without a display. `ended` is called on the server's thread, once, after Drop() and Cancel().
  [[nodiscard]] static std::unique_ptr<DragSource> Begin(Contents contents, std::function<void(DragEnd)> ended);

  ~DragSource();

  // The mouse has moved: the window under it is asked whether it would take the data.
  void Move();

  // Whether the window under the mouse would.
  [[nodiscard]] bool IsWelcome() const;

  // The button has been released, which ends the drag.
  void Drop();

  void Cancel();

  DragSource(const DragSource&) = delete;
  DragSource& operator=(const DragSource&) = delete;

 private:
  struct Body;
  explicit DragSource(std::shared_ptr<Body> body);

  std::shared_ptr<Body> body_;
};

}  // namespace tessaro::platform
