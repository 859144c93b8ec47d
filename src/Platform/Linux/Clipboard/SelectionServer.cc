#include "Platform/Linux/Clipboard/SelectionServer.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <thread>

namespace tessaro::platform {

namespace {

using Clock = std::chrono::steady_clock;

// Larger values go in pieces, so that the X server needn't hold them, and serves others in between.
constexpr std::size_t kMostAtOnce = 256 << 10;
constexpr std::size_t kRequestHeader = 64;

// A requestor that takes no further piece has gone, or has lost interest.
constexpr auto kTransferDeadline = std::chrono::seconds(30);
constexpr int kLookAfterTransfers = 1000;  // milliseconds

template <typename Event>
const Event* As(const xcb_generic_event_t& event, int type) {
  return (event.response_type & 0x7f) == type ? reinterpret_cast<const Event*>(&event) : nullptr;
}

}  // namespace

SelectionServer& SelectionServer::Shared() {
  // Never destroyed: its thread works until the very end of the process.
  static auto& server = *new SelectionServer();
  return server;
}

SelectionServer::SelectionServer() : wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!connection_) return;
  const std::size_t largestRequest = std::size_t{xcb_get_maximum_request_length(connection_.get())} * 4;
  chunk_ = std::min(kMostAtOnce, largestRequest - kRequestHeader);
  std::thread([this] { Run(); }).detach();
}

// ---- What the application asks for

bool SelectionServer::Take(const std::string& selection, Offer offer) {
  if (!IsAvailable()) return false;
  const xcb_atom_t atom = connection_.Atom(selection);
  // As one, so that the end of an earlier offer isn't taken for the end of this one.
  const std::lock_guard lock(mutex_);
  offers_[atom] = std::make_shared<const Offer>(std::move(offer));
  xcb_set_selection_owner(connection_.get(), connection_.window(), atom, XCB_CURRENT_TIME);
  return Owns(selection);
}

void SelectionServer::GiveUp(const std::string& selection) {
  if (!IsAvailable()) return;
  const bool isOwner = Owns(selection);
  const xcb_atom_t atom = connection_.Atom(selection);
  {
    const std::lock_guard lock(mutex_);
    offers_.erase(atom);
  }
  if (!isOwner) return;
  xcb_set_selection_owner(connection_.get(), XCB_NONE, atom, XCB_CURRENT_TIME);
  // It must have happened before anybody else takes the selection.
  static_cast<void>(Owns(selection));
}

bool SelectionServer::Owns(const std::string& selection) {
  if (!IsAvailable()) return false;
  const xcb_window_t owner = connection_.OwnerOf(connection_.Atom(selection));
  // Events that came with the reply no longer stand before the descriptor that the thread waits for.
  Wake();
  return owner == connection_.window();
}

void SelectionServer::ListenToMessages(std::function<void(const xcb_client_message_event_t&)> listener) {
  const std::lock_guard lock(mutex_);
  messageListener_ = std::move(listener);
}

// ---- The thread

void SelectionServer::Run() {
  while (connection_) {
    while (const XcbOwner<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) Handle(*event);
    SendAnswers();
    DropLateTransfers();
    xcb_flush(connection_.get());
    if (const XcbOwner<xcb_generic_event_t> event{xcb_poll_for_queued_event(connection_.get())}) {
      Handle(*event);
      continue;
    }
    std::array<pollfd, 2> ready{{{xcb_get_file_descriptor(connection_.get()), POLLIN, 0}, {wake_.get(), POLLIN, 0}}};
    poll(ready.data(), ready.size(), transfers_.empty() ? -1 : kLookAfterTransfers);
    std::uint64_t count = 0;
    static_cast<void>(!read(wake_.get(), &count, sizeof count));
  }
}

void SelectionServer::Wake() {
  const std::uint64_t one = 1;
  static_cast<void>(!write(wake_.get(), &one, sizeof one));
}

void SelectionServer::Handle(const xcb_generic_event_t& event) {
  if (const auto* request = As<xcb_selection_request_event_t>(event, XCB_SELECTION_REQUEST)) {
    HandleRequest(*request);
  } else if (const auto* clear = As<xcb_selection_clear_event_t>(event, XCB_SELECTION_CLEAR)) {
    HandleClear(*clear);
  } else if (const auto* property = As<xcb_property_notify_event_t>(event, XCB_PROPERTY_NOTIFY)) {
    HandleProperty(*property);
  } else if (const auto* destroyed = As<xcb_destroy_notify_event_t>(event, XCB_DESTROY_NOTIFY)) {
    Forget(destroyed->window);
  } else if (const auto* message = As<xcb_client_message_event_t>(event, XCB_CLIENT_MESSAGE)) {
    std::unique_lock lock(mutex_);
    const auto listener = messageListener_;
    lock.unlock();
    if (listener) listener(*message);
  }
}

std::shared_ptr<const SelectionServer::Offer> SelectionServer::OfferOf(xcb_atom_t selection) {
  const std::lock_guard lock(mutex_);
  const auto found = offers_.find(selection);
  return found == offers_.end() ? nullptr : found->second;
}

void SelectionServer::HandleRequest(const xcb_selection_request_event_t& event) {
  // Very old programs leave the choice of the property to the owner.
  const xcb_atom_t property = event.property != XCB_NONE ? event.property : event.target;
  const Request request{event.requestor, event.selection, event.target, property, event.time};
  const auto offer = OfferOf(event.selection);
  if (!offer) return Reply(request, std::nullopt);
  if (event.target == connection_.Atom("TARGETS")) return SendTargets(request, *offer);
  offer->provide(connection_.NameOf(event.target), [this, request](std::optional<Contents> contents) {
    const std::lock_guard lock(mutex_);
    answers_.emplace_back(request, std::move(contents));
    Wake();
  });
}

void SelectionServer::HandleClear(const xcb_selection_clear_event_t& event) {
  std::unique_lock lock(mutex_);
  const auto found = offers_.find(event.selection);
  const bool isTakenAgain = connection_.OwnerOf(event.selection) == connection_.window();
  if (found == offers_.end() || isTakenAgain) return;
  const auto offer = found->second;
  offers_.erase(found);
  lock.unlock();
  if (offer->lost) offer->lost();
}

void SelectionServer::SendAnswers() {
  for (;;) {
    std::unique_lock lock(mutex_);
    if (answers_.empty()) return;
    const auto [request, contents] = std::move(answers_.front());
    answers_.pop_front();
    lock.unlock();
    Reply(request, contents);
  }
}

void SelectionServer::SendTargets(const Request& request, const Offer& offer) {
  std::vector<xcb_atom_t> atoms{connection_.Atom("TARGETS")};
  for (const std::string& target : offer.targets) atoms.push_back(connection_.Atom(target));
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, request.requestor, request.property, XCB_ATOM_ATOM, 32,
                      static_cast<std::uint32_t>(atoms.size()), atoms.data());
  Notify(request, true);
  if (offer.listed) offer.listed();
}

void SelectionServer::Reply(const Request& request, const std::optional<Contents>& contents) {
  if (!contents) return Notify(request, false);
  if (contents->bytes->size() > chunk_) return BeginTransfer(request, *contents);
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                      connection_.Atom(contents->type), 8, static_cast<std::uint32_t>(contents->bytes->size()),
                      contents->bytes->data());
  Notify(request, true);
}

void SelectionServer::Notify(const Request& request, bool isAccepted) {
  xcb_selection_notify_event_t event{};
  event.response_type = XCB_SELECTION_NOTIFY;
  event.time = request.time;
  event.requestor = request.requestor;
  event.selection = request.selection;
  event.target = request.target;
  event.property = isAccepted ? request.property : static_cast<xcb_atom_t>(XCB_NONE);
  std::array<char, 32> message{};
  std::copy_n(reinterpret_cast<const char*>(&event), sizeof event, message.begin());
  xcb_send_event(connection_.get(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, message.data());
}

// ---- Values in pieces

void SelectionServer::WatchRequestor(xcb_window_t requestor, bool isWatched) {
  const std::uint32_t events =
      isWatched ? XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY : XCB_EVENT_MASK_NO_EVENT;
  xcb_change_window_attributes(connection_.get(), requestor, XCB_CW_EVENT_MASK, &events);
}

void SelectionServer::BeginTransfer(const Request& request, const Contents& contents) {
  WatchRequestor(request.requestor, true);
  const auto size = static_cast<std::uint32_t>(std::min<std::size_t>(contents.bytes->size(), UINT32_MAX));
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                      connection_.Atom("INCR"), 32, 1, &size);
  transfers_.push_back({request, connection_.Atom(contents.type), contents.bytes, 0, Clock::now() + kTransferDeadline});
  Notify(request, true);
}

// The requestor deletes the property when it has taken a piece; an empty piece tells it that there are no more.
void SelectionServer::HandleProperty(const xcb_property_notify_event_t& event) {
  if (event.state != XCB_PROPERTY_DELETE) return;
  const auto transfer = std::find_if(transfers_.begin(), transfers_.end(), [&event](const Transfer& each) {
    return each.request.requestor == event.window && each.request.property == event.atom;
  });
  if (transfer == transfers_.end()) return;
  const bool wasAll = transfer->sent == transfer->bytes->size();
  SendChunk(*transfer);
  if (!wasAll) return;
  transfers_.erase(transfer);
  const bool isBusy = std::any_of(transfers_.begin(), transfers_.end(),
                                  [&event](const Transfer& each) { return each.request.requestor == event.window; });
  if (!isBusy) WatchRequestor(event.window, false);
}

void SelectionServer::SendChunk(Transfer& transfer) {
  const std::size_t size = std::min(chunk_, transfer.bytes->size() - transfer.sent);
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, transfer.request.requestor, transfer.request.property,
                      transfer.type, 8, static_cast<std::uint32_t>(size), transfer.bytes->data() + transfer.sent);
  transfer.sent += size;
  transfer.deadline = Clock::now() + kTransferDeadline;
}

void SelectionServer::Forget(xcb_window_t requestor) {
  transfers_.remove_if([requestor](const Transfer& each) { return each.request.requestor == requestor; });
}

void SelectionServer::DropLateTransfers() {
  const auto now = Clock::now();
  transfers_.remove_if([now](const Transfer& each) { return each.deadline < now; });
}

}  // namespace tessaro::platform
