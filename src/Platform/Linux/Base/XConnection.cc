#include "Platform/Linux/Base/XConnection.h"

namespace tessaro::platform {

namespace {

const xcb_screen_t* ScreenOf(xcb_connection_t* connection, int number) {
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (; screens.rem > 1 && number > 0; --number) xcb_screen_next(&screens);
  return screens.data;
}

}  // namespace

XConnection::XConnection() {
  int number = 0;
  connection_.reset(xcb_connect(nullptr, &number));
  if (xcb_connection_has_error(connection_.get()) != 0) return;
  const xcb_window_t root = ScreenOf(connection_.get(), number)->root;
  window_ = xcb_generate_id(connection_.get());
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, window_, root, -1, -1, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
}

xcb_atom_t XConnection::Atom(std::string_view name) {
  if (const auto known = atoms_.find(name); known != atoms_.end()) return known->second;
  const auto cookie = xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
  const XcbOwner<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(get(), cookie, nullptr));
  if (!reply) return XCB_NONE;
  atoms_.emplace(name, reply->atom);
  return reply->atom;
}

std::string XConnection::NameOf(xcb_atom_t atom) {
  const XcbOwner<xcb_get_atom_name_reply_t> reply(
      xcb_get_atom_name_reply(get(), xcb_get_atom_name(get(), atom), nullptr));
  if (!reply) return {};
  return {xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

xcb_window_t XConnection::OwnerOf(xcb_atom_t selection) {
  const XcbOwner<xcb_get_selection_owner_reply_t> reply(
      xcb_get_selection_owner_reply(get(), xcb_get_selection_owner(get(), selection), nullptr));
  return reply ? reply->owner : XCB_NONE;
}

}  // namespace tessaro::platform
