#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/Base/XConnection.h"

namespace tessaro::platform {

// The contents of a selection. The functions are called on the selections' thread and must not wait.
struct SelectionOffer {
  using Bytes = std::shared_ptr<const std::string>;  // null for an unknown target

  // Takes the reply to one request, on any thread, at any time.
  using Reply = std::function<void(Bytes)>;

  std::vector<std::string> targets;
  std::function<void(const std::string& target, Reply reply)> provide;
  std::function<void()> lost;  // another program has taken the selection
};

// Serves this process's selections to other programs, large values in pieces. On the thread of the connection's events
// only.
class SelectionServer {
 public:
  // Runs a task on that thread later; called on any thread.
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
