#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Common/FileDescriptor.h"
#include "Platform/Linux/Base/XConnection.h"

namespace tessaro::platform {

// Offers selections of the X server – its clipboard, what is being dragged – to other programs. It answers them on a
// thread of its own, so that they needn't wait for the application, and large values go in pieces as they are taken.
// Calls are allowed on any thread. It lives until the process ends.
class SelectionServer {
 public:
  struct Contents {
    std::string type;  // of the X server
    std::shared_ptr<const std::string> bytes;
  };

  // Takes the answer to one request, on any thread, at any time; nothing refuses it.
  using Answer = std::function<void(std::optional<Contents>)>;

  // What a selection is made of. The functions are called on the server's thread and must not wait.
  struct Offer {
    std::vector<std::string> targets;
    std::function<void(const std::string& target, Answer answer)> provide;
    std::function<void()> listed;  // another program has asked for the targets
    std::function<void()> lost;    // another program has taken the selection
  };

  static SelectionServer& Shared();

  // False without a display.
  [[nodiscard]] bool IsAvailable() const { return static_cast<bool>(connection_); }

  // Takes the selection from whoever has it. False when the X server refuses.
  [[nodiscard]] bool Take(const std::string& selection, Offer offer);

  // Gives a selection up that this server has.
  void GiveUp(const std::string& selection);

  [[nodiscard]] bool Owns(const std::string& selection);

  // Client messages that reach window(), on the server's thread.
  void ListenToMessages(std::function<void(const xcb_client_message_event_t&)> listener);

  [[nodiscard]] XConnection& connection() { return connection_; }

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
    xcb_atom_t type;
    std::shared_ptr<const std::string> bytes;
    std::size_t sent;
    std::chrono::steady_clock::time_point deadline;
  };

  SelectionServer();

  void Run();
  void Handle(const xcb_generic_event_t& event);
  void HandleRequest(const xcb_selection_request_event_t& event);
  void HandleClear(const xcb_selection_clear_event_t& event);
  void HandleProperty(const xcb_property_notify_event_t& event);
  void Forget(xcb_window_t requestor);
  void DropLateTransfers();

  void SendTargets(const Request& request, const Offer& offer);
  void Reply(const Request& request, const std::optional<Contents>& contents);
  void Notify(const Request& request, bool isAccepted);
  void BeginTransfer(const Request& request, const Contents& contents);
  void SendChunk(Transfer& transfer);
  void WatchRequestor(xcb_window_t requestor, bool isWatched);
  void SendAnswers();
  void Wake();

  [[nodiscard]] std::shared_ptr<const Offer> OfferOf(xcb_atom_t selection);

  XConnection connection_;
  FileDescriptor wake_;
  std::size_t chunk_ = 0;

  std::mutex mutex_;
  std::map<xcb_atom_t, std::shared_ptr<const Offer>> offers_;
  std::deque<std::pair<Request, std::optional<Contents>>> answers_;
  std::function<void(const xcb_client_message_event_t&)> messageListener_;

  std::list<Transfer> transfers_;  // of the thread
};

}  // namespace tessaro::platform
