#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace tessaro::platform {

// Drags data to other programs' windows by the XDND protocol, while the application follows the mouse. There is one
// drag at a time in a process. Main thread only; nothing here waits for other programs.
class DragSource {
 public:
  using Contents = std::map<std::string, std::string>;  // by target: names of MIME types

  // Nothing without a display.
  [[nodiscard]] static std::unique_ptr<DragSource> Begin(Contents contents);

  // A drag that hasn't ended is called off.
  ~DragSource();

  // The mouse has moved: the window under it is asked whether it would take the data.
  void Move();

  // Whether the window under the mouse would.
  [[nodiscard]] bool IsWelcome() const;

  // The button has been released, which ends the drag: the target has some seconds to make up its mind, and may fetch
  // the data until the next drag.
  void Drop();

  DragSource(const DragSource&) = delete;
  DragSource& operator=(const DragSource&) = delete;

 private:
  struct Body;
  explicit DragSource(std::shared_ptr<Body> body);

  std::shared_ptr<Body> body_;
};

}  // namespace tessaro::platform
