#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Base/Result.h"
#include "Platform/Linux/Base/XConnection.h"

// The two sides of the X protocol for selections, both without blocking, on the thread of the connection's events only.
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

// Reads selections of other programs.
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

// The contents of a selection. The functions are called on the selections' thread and must not wait.
struct SelectionOffer {
  using Bytes = std::shared_ptr<const std::string>;  // null for an unknown target

  // Takes the reply to one request, on any thread, at any time.
  using Reply = std::function<void(Bytes)>;

  std::vector<std::string> targets;
  std::function<void(const std::string& target, Reply reply)> provide;
  std::function<void()> lost;  // another program has taken the selection
};

// Serves this process's selections to other programs, large values in pieces.
class SelectionServer {
 public:
  // Runs a task on the thread of the events later; called on any thread.
  using Post = std::function<void(std::function<void()>)>;

  SelectionServer(XConnection& connection, Post post);

  // Takes the selection from its owner. False when the X server refuses.
  [[nodiscard]] bool Take(xcb_atom_t selection, std::shared_ptr<const SelectionOffer> offer);
  [[nodiscard]] bool Owns(xcb_atom_t selection);

  void HandleRequest(const xcb_selection_request_event_t& event);
  void HandleClear(const xcb_selection_clear_event_t& event);
  void HandleProperty(const xcb_property_notify_event_t& event);
  void Forget(xcb_window_t requestor);
  void DropLateTransfers();

  [[nodiscard]] bool IsBusy() const { return !transfers_.empty(); }

 private:
  struct Request {
    xcb_window_t requestor;
    xcb_atom_t selection;
    xcb_atom_t target;
    xcb_atom_t property;
    xcb_timestamp_t time;
  };

  // A value on its way in pieces.
  struct Transfer {
    Request request;
    SelectionOffer::Bytes bytes;
    std::size_t sent;
    std::chrono::steady_clock::time_point deadline;
  };

  void SendTargets(const Request& request, const SelectionOffer& offer);
  void Send(const Request& request, const SelectionOffer::Bytes& bytes);
  void Notify(const Request& request, bool isAccepted);
  void BeginTransfer(const Request& request, const SelectionOffer::Bytes& bytes);
  void SendPiece(Transfer& transfer);
  void Put(const Request& request, const char* bytes, std::size_t size);
  void WatchRequestor(xcb_window_t requestor, bool isWatched);

  XConnection& connection_;
  Post post_;
  std::size_t pieceSize_ = 0;
  std::map<xcb_atom_t, std::shared_ptr<const SelectionOffer>> offers_;
  std::list<Transfer> transfers_;
};

}  // namespace tessaro::platform
