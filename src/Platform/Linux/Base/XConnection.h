#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace tessaro::platform {

struct XcbMemory {
  void operator()(void* memory) const { std::free(memory); }
};

// Owner of a reply, an event or an error of the X server's.
template <typename T>
using XcbOwner = std::unique_ptr<T, XcbMemory>;

struct XConnectionCloser {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

// A client of the X server beside AppKit, so that neither takes events from the other, with a window that nobody sees.
// All calls are allowed on any thread. Where there is no display, or when it has gone, it is false.
class XConnection {
 public:
  XConnection();

  explicit operator bool() const { return window_ != XCB_NONE && xcb_connection_has_error(connection_.get()) == 0; }

  [[nodiscard]] xcb_connection_t* get() const { return connection_.get(); }
  [[nodiscard]] xcb_window_t window() const { return window_; }
  [[nodiscard]] xcb_window_t root() const { return root_; }

  [[nodiscard]] xcb_atom_t Atom(std::string_view name);
  [[nodiscard]] std::string NameOf(xcb_atom_t atom);
  [[nodiscard]] xcb_window_t OwnerOf(xcb_atom_t selection);

  // Waits for the server's next event; null when there is none by `end`, or when the display has gone.
  [[nodiscard]] XcbOwner<xcb_generic_event_t> WaitForEvent(std::chrono::steady_clock::time_point end);

 private:
  std::unique_ptr<xcb_connection_t, XConnectionCloser> connection_;
  xcb_window_t root_ = XCB_NONE;
  xcb_window_t window_ = XCB_NONE;
  std::mutex mutex_;
  std::map<std::string, xcb_atom_t, std::less<>> atoms_;
};

}  // namespace tessaro::platform
