#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

#include "Base/Owned.h"

namespace tessaro::platform {

// Owner of a reply or an event of the X server.
template <typename T>
using XcbOwner = Owned<T, std::free>;

// The event as one of a type; nullptr for an event of another type.
template <typename Event>
[[nodiscard]] const Event* EventAs(const xcb_generic_event_t& event, int type) {
  return (event.response_type & 0x7f) == type ? reinterpret_cast<const Event*>(&event) : nullptr;
}

// A connection to the X server, with an invisible window. AppKit has its own: neither takes the other's events. False
// without a display, and after the loss of the display. One thread at a time.
class XConnection {
 public:
  XConnection();

  explicit operator bool() const { return window_ != XCB_NONE && xcb_connection_has_error(connection_.get()) == 0; }

  [[nodiscard]] xcb_connection_t* get() const { return connection_.get(); }
  [[nodiscard]] xcb_window_t window() const { return window_; }

  [[nodiscard]] xcb_atom_t Atom(std::string_view name);
  [[nodiscard]] std::string NameOf(xcb_atom_t atom);
  [[nodiscard]] xcb_window_t OwnerOf(xcb_atom_t selection);

 private:
  Owned<xcb_connection_t, xcb_disconnect> connection_;
  xcb_window_t window_ = XCB_NONE;
  std::map<std::string, xcb_atom_t, std::less<>> atoms_;
};

}  // namespace tessaro::platform
