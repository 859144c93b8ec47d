#include "Platform/Linux/Clipboard/SelectionReader.h"

#include <algorithm>
#include <cstring>

namespace tessaro::platform {

namespace {

using Clock = std::chrono::steady_clock;

// For each step, not for the whole: large values take their time.
constexpr auto kDeadline = std::chrono::seconds(3);
constexpr auto kLongest = std::chrono::seconds(30);

// An owner that ends leaves its requestors waiting, so they look after it.
constexpr auto kLookAfterOwner = std::chrono::milliseconds(200);

constexpr std::size_t kLargest = std::size_t{512} << 20;
constexpr std::uint32_t kWholeProperty = 0x1fffffff;  // in words of four bytes
constexpr unsigned kProperties = 16;

template <typename Event>
const Event* As(const xcb_generic_event_t& event, int type) {
  return (event.response_type & 0x7f) == type ? reinterpret_cast<const Event*>(&event) : nullptr;
}

}  // namespace

// A late answer to an earlier question must not be taken for the answer to this one.
xcb_atom_t SelectionReader::NextProperty() {
  return connection_.Atom("TESSARO_SELECTION_" + std::to_string(requests_++ % kProperties));
}

template <typename Accept>
bool SelectionReader::WaitFor(xcb_atom_t selection, xcb_window_t owner, Accept accept) {
  const auto end = Clock::now() + kDeadline;
  while (Clock::now() < end) {
    const auto event = connection_.WaitForEvent(std::min(end, Clock::now() + kLookAfterOwner));
    if (event && accept(*event)) return true;
    if (!event && (!connection_ || connection_.OwnerOf(selection) != owner)) return false;
  }
  return false;
}

std::optional<xcb_atom_t> SelectionReader::WaitForAnswer(xcb_atom_t selection, xcb_atom_t target, xcb_window_t owner) {
  xcb_atom_t answer = XCB_NONE;
  const bool isAnswered = WaitFor(selection, owner, [&](const xcb_generic_event_t& event) {
    const auto* notify = As<xcb_selection_notify_event_t>(event, XCB_SELECTION_NOTIFY);
    if (notify == nullptr || notify->selection != selection || notify->target != target) return false;
    answer = notify->property;
    return true;
  });
  return isAnswered ? std::optional(answer) : std::nullopt;
}

SelectionReader::Property SelectionReader::TakeProperty(xcb_atom_t property) {
  const auto cookie = xcb_get_property(connection_.get(), 1, connection_.window(), property, XCB_GET_PROPERTY_TYPE_ANY,
                                       0, kWholeProperty);
  const XcbOwner<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_.get(), cookie, nullptr));
  if (!reply) return {};
  const auto* bytes = static_cast<const char*>(xcb_get_property_value(reply.get()));
  return {reply->type, {bytes, static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))}};
}

bool SelectionReader::WaitForChunk(xcb_atom_t property, xcb_atom_t selection, xcb_window_t owner) {
  return WaitFor(selection, owner, [&](const xcb_generic_event_t& event) {
    const auto* notify = As<xcb_property_notify_event_t>(event, XCB_PROPERTY_NOTIFY);
    return notify != nullptr && notify->atom == property && notify->state == XCB_PROPERTY_NEW_VALUE;
  });
}

// Taking each piece tells the owner to send the next; an empty one is the end.
SelectionReader::Result SelectionReader::ReadInChunks(xcb_atom_t property, xcb_atom_t selection, xcb_window_t owner) {
  const auto end = Clock::now() + kLongest;
  std::string whole;
  while (Clock::now() < end && whole.size() <= kLargest) {
    if (!WaitForChunk(property, selection, owner)) break;
    const std::string chunk = TakeProperty(property).bytes;
    if (chunk.empty()) return {Failure::kNone, std::move(whole)};
    whole += chunk;
  }
  return {Failure::kNoAnswer, {}};
}

SelectionReader::Result SelectionReader::Read(xcb_atom_t selection, xcb_atom_t target) {
  const xcb_window_t owner = connection_.OwnerOf(selection);
  if (owner == XCB_NONE) return {Failure::kRefused, {}};
  const xcb_atom_t property = NextProperty();
  xcb_delete_property(connection_.get(), connection_.window(), property);
  xcb_convert_selection(connection_.get(), connection_.window(), selection, target, property, XCB_CURRENT_TIME);

  const auto answer = WaitForAnswer(selection, target, owner);
  if (!answer) return {Failure::kNoAnswer, {}};
  if (*answer == XCB_NONE) return {Failure::kRefused, {}};
  Property taken = TakeProperty(*answer);
  if (taken.type == connection_.Atom("INCR")) return ReadInChunks(*answer, selection, owner);
  if (taken.type == XCB_NONE) return {Failure::kRefused, {}};
  return {Failure::kNone, std::move(taken.bytes)};
}

std::optional<std::vector<std::string>> SelectionReader::Targets(xcb_atom_t selection) {
  const Result result = Read(selection, connection_.Atom("TARGETS"));
  if (result.failure == Failure::kNoAnswer) return std::nullopt;
  std::vector<xcb_atom_t> atoms(result.bytes.size() / sizeof(xcb_atom_t));
  if (!atoms.empty()) std::memcpy(atoms.data(), result.bytes.data(), atoms.size() * sizeof(xcb_atom_t));
  std::vector<std::string> names;
  for (const xcb_atom_t atom : atoms) {
    if (std::string name = connection_.NameOf(atom); !name.empty()) names.push_back(std::move(name));
  }
  return names;
}

}  // namespace tessaro::platform
