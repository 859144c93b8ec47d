#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <string>

#include "Base/Result.h"
#include "Platform/Linux/Base/XConnection.h"

namespace tessaro::platform {

enum SelectionFailure : int {
  kRefused = 1,  // the owner doesn't have the target, or there is no owner
  kNoAnswer,     // the owner hangs, sends too much, or went away
};

struct SelectionLimits {
  std::chrono::milliseconds answer{1500};  // for each reply of the owner
  std::chrono::milliseconds whole{2000};
  std::size_t bytes = std::size_t{512} << 20;
};

// Reads selections of other programs, without blocking. On the thread of the connection's events only.
class SelectionReader {
 public:
  using Done = std::function<void(Result<std::string>)>;

  explicit SelectionReader(XConnection& connection) : connection_(connection) {}

  // `done` is called exactly once.
  void Begin(xcb_atom_t selection, xcb_atom_t target, SelectionLimits limits, Done done);

  void HandleAnswer(const xcb_selection_notify_event_t& event);
  void HandleProperty(const xcb_property_notify_event_t& event);
  void EndLateReads();
  void EndAllReads();

  [[nodiscard]] bool IsBusy() const { return !reads_.empty(); }

 private:
  using Clock = std::chrono::steady_clock;

  struct Read {
    xcb_atom_t selection;
    xcb_atom_t target;
    xcb_atom_t property;
    xcb_window_t owner;
    SelectionLimits limits;
    Done done;
    Clock::time_point end;
    Clock::time_point stepEnd;
    Clock::time_point nextOwnerCheck;
    bool isInPieces = false;
    std::string bytes;
  };
  using Position = std::list<Read>::iterator;

  struct Property {
    xcb_atom_t type = XCB_NONE;
    std::string bytes;
  };

  [[nodiscard]] xcb_atom_t NextProperty();
  [[nodiscard]] Property TakeProperty(const Read& read);
  void AddPiece(Position read, std::string piece);
  void End(Position read, Result<std::string> result);

  XConnection& connection_;
  std::list<Read> reads_;
  unsigned requests_ = 0;
};

}  // namespace tessaro::platform
