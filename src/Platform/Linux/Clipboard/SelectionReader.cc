#include "Platform/Linux/Clipboard/SelectionReader.h"

#include <algorithm>
#include <utility>

namespace tessaro::platform {

namespace {

// The X server does not report an owner's end to requestors: check for it.
constexpr auto kOwnerCheckInterval = std::chrono::milliseconds(100);

constexpr unsigned kProperties = 16;
constexpr char kTooLarge[] = "the value is too large";

}  // namespace

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

}  // namespace tessaro::platform
