#include "Platform/Linux/Clipboard/SelectionExchange.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace tessaro::platform {

namespace {

using Clock = std::chrono::steady_clock;

// The X server does not report an owner's end to requestors: check for it.
constexpr auto kOwnerCheckInterval = std::chrono::milliseconds(100);

constexpr unsigned kProperties = 16;
constexpr char kTooLarge[] = "the value is too large";

// Larger values go in pieces: the X server must neither hold them nor be blocked by them.
constexpr std::size_t kMostAtOnce = 256 << 10;
constexpr std::size_t kRequestHeader = 64;

// A requestor that takes no further piece has ended or given up.
constexpr auto kTransferDeadline = std::chrono::seconds(30);

}  // namespace

// ---- Reading

// Each read has its own property: a late answer to an earlier read must not be taken for this one's.
xcb_atom_t SelectionReader::NextProperty() {
  return connection_.Atom("TESSARO_SELECTION_" + std::to_string(requests_++ % kProperties));
}

void SelectionReader::Begin(xcb_atom_t selection, xcb_atom_t target, SelectionLimits limits, Done done) {
  const xcb_window_t owner = connection_.OwnerOf(selection);
  if (owner == XCB_NONE) return done(Fail(kRefused, "the selection has no owner"));
  const xcb_atom_t property = NextProperty();
  xcb_delete_property(connection_.get(), connection_.window(), property);
  xcb_convert_selection(connection_.get(), connection_.window(), selection, target, property, XCB_CURRENT_TIME);
  const auto now = Clock::now();
  reads_.push_back({.selection = selection,
                    .target = target,
                    .property = property,
                    .owner = owner,
                    .limits = limits,
                    .done = std::move(done),
                    .end = now + limits.whole,
                    .stepEnd = now + limits.answer,
                    .nextOwnerCheck = now + kOwnerCheckInterval,
                    .bytes = {}});
}

void SelectionReader::End(Position read, Result<std::string> result) {
  const Done done = std::move(read->done);
  reads_.erase(read);
  done(std::move(result));
}

// A property beyond the limit is cut just behind it.
SelectionReader::Property SelectionReader::TakeProperty(const Read& read) {
  const std::size_t words = (read.limits.bytes - read.bytes.size()) / 4 + 1;
  const auto cookie = xcb_get_property(connection_.get(), 1, connection_.window(), read.property,
                                       XCB_GET_PROPERTY_TYPE_ANY, 0, static_cast<std::uint32_t>(words));
  const XcbOwner<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_.get(), cookie, nullptr));
  if (!reply) return {};
  const auto* bytes = static_cast<const char*>(xcb_get_property_value(reply.get()));
  return {reply->type, {bytes, static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))}};
}

void SelectionReader::HandleAnswer(const xcb_selection_notify_event_t& event) {
  const auto read = std::find_if(reads_.begin(), reads_.end(), [&event](const Read& each) {
    const bool matchesProperty = event.property == XCB_NONE || event.property == each.property;
    return matchesProperty && each.selection == event.selection && each.target == event.target && !each.isInPieces;
  });
  if (read == reads_.end()) return;
  if (event.property == XCB_NONE) return End(read, Fail(kRefused, "the owner refused"));
  Property taken = TakeProperty(*read);
  if (taken.type == connection_.Atom("INCR")) {
    read->isInPieces = true;
    read->stepEnd = Clock::now() + read->limits.answer;
    return;
  }
  if (taken.type == XCB_NONE) return End(read, Fail(kRefused, "the owner sent nothing"));
  if (taken.bytes.size() > read->limits.bytes) return End(read, Fail(kNoAnswer, kTooLarge));
  End(read, std::move(taken.bytes));
}

// Deleting the property requests the next piece; an empty piece is the last.
void SelectionReader::HandleProperty(const xcb_property_notify_event_t& event) {
  if (event.state != XCB_PROPERTY_NEW_VALUE) return;
  const auto read = std::find_if(reads_.begin(), reads_.end(),
                                 [&event](const Read& each) { return each.isInPieces && each.property == event.atom; });
  if (read != reads_.end()) AddPiece(read, TakeProperty(*read).bytes);
}

void SelectionReader::AddPiece(Position read, std::string piece) {
  if (piece.empty()) return End(read, std::move(read->bytes));
  if (read->bytes.size() + piece.size() > read->limits.bytes) return End(read, Fail(kNoAnswer, kTooLarge));
  read->bytes += piece;
  read->stepEnd = Clock::now() + read->limits.answer;
}

void SelectionReader::EndLateReads() {
  const auto now = Clock::now();
  for (auto read = reads_.begin(); read != reads_.end();) {
    const auto current = read++;
    if (now >= std::min(current->end, current->stepEnd)) {
      End(current, Fail(kNoAnswer, "the owner does not answer"));
    } else if (now >= current->nextOwnerCheck) {
      current->nextOwnerCheck = now + kOwnerCheckInterval;
      if (connection_.OwnerOf(current->selection) != current->owner)
        End(current, Fail(kNoAnswer, "the owner has gone"));
    }
  }
}

void SelectionReader::EndAllReads() {
  while (!reads_.empty()) End(reads_.begin(), Fail(kNoAnswer, "the display has gone"));
}

// ---- Serving

SelectionServer::SelectionServer(XConnection& connection, Post post) : connection_(connection), post_(std::move(post)) {
  if (!connection_) return;
  const std::size_t largestRequest = std::size_t{xcb_get_maximum_request_length(connection_.get())} * 4;
  pieceSize_ = std::min(kMostAtOnce, largestRequest - kRequestHeader);
}

bool SelectionServer::Take(xcb_atom_t selection, std::shared_ptr<const SelectionOffer> offer) {
  xcb_set_selection_owner(connection_.get(), connection_.window(), selection, XCB_CURRENT_TIME);
  if (!Owns(selection)) return false;
  offers_[selection] = std::move(offer);
  return true;
}

bool SelectionServer::Owns(xcb_atom_t selection) { return connection_.OwnerOf(selection) == connection_.window(); }

void SelectionServer::HandleRequest(const xcb_selection_request_event_t& event) {
  // Obsolete clients send no property: the owner chooses one.
  const xcb_atom_t property = event.property != XCB_NONE ? event.property : event.target;
  const Request request{event.requestor, event.selection, event.target, property, event.time};
  const auto found = offers_.find(event.selection);
  if (found == offers_.end()) return Notify(request, false);
  const auto offer = found->second;
  if (event.target == connection_.Atom("TARGETS")) return SendTargets(request, *offer);
  offer->provide(connection_.NameOf(event.target), [this, request](SelectionOffer::Bytes bytes) {
    post_([this, request, bytes = std::move(bytes)] { Send(request, bytes); });
  });
}

void SelectionServer::HandleClear(const xcb_selection_clear_event_t& event) {
  const auto found = offers_.find(event.selection);
  // The event may be about an earlier offer.
  if (found == offers_.end() || Owns(event.selection)) return;
  const auto offer = found->second;
  offers_.erase(found);
  if (offer->lost) offer->lost();
}

void SelectionServer::SendTargets(const Request& request, const SelectionOffer& offer) {
  std::vector<xcb_atom_t> atoms{connection_.Atom("TARGETS")};
  for (const std::string& target : offer.targets) atoms.push_back(connection_.Atom(target));
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, request.requestor, request.property, XCB_ATOM_ATOM, 32,
                      static_cast<std::uint32_t>(atoms.size()), atoms.data());
  Notify(request, true);
}

// The property's type is the target itself.
void SelectionServer::Put(const Request& request, const char* bytes, std::size_t size) {
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, request.requestor, request.property, request.target, 8,
                      static_cast<std::uint32_t>(size), bytes);
}

void SelectionServer::Send(const Request& request, const SelectionOffer::Bytes& bytes) {
  if (!bytes) return Notify(request, false);
  if (bytes->size() > pieceSize_) return BeginTransfer(request, bytes);
  Put(request, bytes->data(), bytes->size());
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

void SelectionServer::WatchRequestor(xcb_window_t requestor, bool isWatched) {
  const std::uint32_t events =
      isWatched ? XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY : XCB_EVENT_MASK_NO_EVENT;
  xcb_change_window_attributes(connection_.get(), requestor, XCB_CW_EVENT_MASK, &events);
}

void SelectionServer::BeginTransfer(const Request& request, const SelectionOffer::Bytes& bytes) {
  WatchRequestor(request.requestor, true);
  const auto size = static_cast<std::uint32_t>(std::min<std::size_t>(bytes->size(), UINT32_MAX));
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                      connection_.Atom("INCR"), 32, 1, &size);
  transfers_.push_back({request, bytes, 0, Clock::now() + kTransferDeadline});
  Notify(request, true);
}

// The requestor deletes the property when it has taken a piece. An empty piece ends the transfer.
void SelectionServer::HandleProperty(const xcb_property_notify_event_t& event) {
  if (event.state != XCB_PROPERTY_DELETE) return;
  const auto transfer = std::find_if(transfers_.begin(), transfers_.end(), [&event](const Transfer& each) {
    return each.request.requestor == event.window && each.request.property == event.atom;
  });
  if (transfer == transfers_.end()) return;
  const bool wasAll = transfer->sent == transfer->bytes->size();
  SendPiece(*transfer);
  if (!wasAll) return;
  transfers_.erase(transfer);
  const bool isBusy = std::any_of(transfers_.begin(), transfers_.end(),
                                  [&event](const Transfer& each) { return each.request.requestor == event.window; });
  if (!isBusy) WatchRequestor(event.window, false);
}

void SelectionServer::SendPiece(Transfer& transfer) {
  const std::size_t size = std::min(pieceSize_, transfer.bytes->size() - transfer.sent);
  Put(transfer.request, transfer.bytes->data() + transfer.sent, size);
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
