#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Base/XConnection.h"

namespace tessaro::platform {

// Fetches what other programs offer as a selection of the X server: its clipboard, what is being dragged. Calls wait
// for the other program, some seconds at most. One thread at a time.
class SelectionReader {
 public:
  enum class Failure {
    kNone,
    kRefused,   // the owner doesn't have it, or there is no owner
    kNoAnswer,  // the owner hangs, or went away in the middle
  };

  struct Result {
    Failure failure = Failure::kNone;
    std::string bytes;
  };

  explicit SelectionReader(XConnection& connection) : connection_(connection) {}

  [[nodiscard]] Result Read(xcb_atom_t selection, xcb_atom_t target);

  // The targets that the owner offers, by name; nothing when it doesn't answer.
  [[nodiscard]] std::optional<std::vector<std::string>> Targets(xcb_atom_t selection);

 private:
  struct Property {
    xcb_atom_t type = XCB_NONE;
    std::string bytes;
  };

  [[nodiscard]] std::optional<xcb_atom_t> WaitForAnswer(xcb_atom_t selection, xcb_atom_t target, xcb_window_t owner);
  [[nodiscard]] Property TakeProperty(xcb_atom_t property);
  [[nodiscard]] bool WaitForChunk(xcb_atom_t property, xcb_atom_t selection, xcb_window_t owner);
  [[nodiscard]] Result ReadInChunks(xcb_atom_t property, xcb_atom_t selection, xcb_window_t owner);
  [[nodiscard]] xcb_atom_t NextProperty();

  template <typename Accept>
  [[nodiscard]] bool WaitFor(xcb_atom_t selection, xcb_window_t owner, Accept accept);

  XConnection& connection_;
  unsigned requests_ = 0;
};

}  // namespace tessaro::platform
