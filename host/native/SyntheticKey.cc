#include "native/SyntheticKey.h"

#include <X11/Xlib.h>
#include <uv.h>

#include "Base/Owned.h"

namespace {

XEvent KeyEvent(Display* display, int type, Window window, unsigned keycode) {
  XEvent event{};
  event.xkey.type = type;
  event.xkey.display = display;
  event.xkey.window = window;
  event.xkey.root = DefaultRootWindow(display);
  event.xkey.time = static_cast<Time>(uv_hrtime() / 1000000);
  event.xkey.same_screen = True;
  event.xkey.keycode = keycode;
  return event;
}

void Send(Display* display, int type, Window window, unsigned keycode) {
  XEvent event = KeyEvent(display, type, window, keycode);
  XSendEvent(display, window, False, type == KeyPress ? KeyPressMask : KeyReleaseMask, &event);
}

}  // namespace

std::uint64_t SendSyntheticKey(unsigned long window, unsigned keycode, std::span<const unsigned> held) {
  const Owned<Display, XCloseDisplay> display(XOpenDisplay(nullptr));
  if (!display) return 0;
  for (const unsigned modifier : held) Send(display.get(), KeyPress, window, modifier);
  const std::uint64_t sent = uv_hrtime();
  Send(display.get(), KeyPress, window, keycode);
  Send(display.get(), KeyRelease, window, keycode);
  for (const unsigned modifier : held) Send(display.get(), KeyRelease, window, modifier);
  XFlush(display.get());
  return sent;
}
