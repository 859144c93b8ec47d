#include "native/DropTarget.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kDeadline = std::chrono::minutes(1);
constexpr unsigned kSize = 200;
constexpr long kProtocolVersion = 5;
constexpr long kMostWords = 1 << 20;

struct DisplayCloser {
  void operator()(Display* display) const { XCloseDisplay(display); }
};

struct XlibDeleter {
  void operator()(void* memory) const { XFree(memory); }
};

struct Property {
  std::unique_ptr<unsigned char, XlibDeleter> bytes;
  unsigned long count = 0;
};

// The target's side of the XDND protocol.
class Target {
 public:
  Target(Display* display, const std::string& title, int x, int y, bool isWilling) : display_(display) {
    isWilling_ = isWilling;
    const int screen = DefaultScreen(display);
    window_ =
        XCreateSimpleWindow(display, DefaultRootWindow(display), x, y, kSize, kSize, 0, 0, WhitePixel(display, screen));
    XStoreName(display, window_, title.c_str());
    XSizeHints hints{};
    hints.flags = USPosition | USSize;
    hints.x = x;
    hints.y = y;
    hints.width = hints.height = kSize;
    XSetWMNormalHints(display, window_, &hints);
    const Atom version = kProtocolVersion;
    XChangeProperty(display, window_, Intern("XdndAware"), XA_ATOM, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&version), 1);
    XMapRaised(display, window_);
    XFlush(display);
  }

  std::optional<ReceivedDrop> Receive(const std::vector<std::string>& wanted) {
    const auto end = Clock::now() + kDeadline;
    while (const std::optional<XClientMessageEvent> message = NextMessage(end)) {
      if (message->message_type == Intern("XdndEnter")) Enter(*message);
      if (message->message_type == Intern("XdndPosition")) Answer("XdndStatus", message->data.l[0]);
      if (message->message_type == Intern("XdndLeave") && !isWilling_) return drop_;
      if (message->message_type == Intern("XdndDrop")) {
        for (const std::string& type : wanted) Fetch(type);
        Answer("XdndFinished", message->data.l[0]);
        return drop_;
      }
    }
    return std::nullopt;
  }

 private:
  Atom Intern(const std::string& name) { return XInternAtom(display_, name.c_str(), False); }

  std::optional<XEvent> NextEvent(Clock::time_point end) {
    for (auto now = Clock::now(); now < end; now = Clock::now()) {
      if (XPending(display_) > 0) {
        XEvent event;
        XNextEvent(display_, &event);
        return event;
      }
      pollfd readable{.fd = ConnectionNumber(display_), .events = POLLIN, .revents = 0};
      poll(&readable, 1, static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(end - now).count()));
    }
    return std::nullopt;
  }

  std::optional<XClientMessageEvent> NextMessage(Clock::time_point end) {
    while (const std::optional<XEvent> event = NextEvent(end)) {
      if (event->type == ClientMessage) return event->xclient;
    }
    return std::nullopt;
  }

  Property Read(Window window, Atom name, bool isLast) {
    Atom type = None;
    int format = 0;
    Property property;
    unsigned long left = 0;
    unsigned char* bytes = nullptr;
    XGetWindowProperty(display_, window, name, 0, kMostWords, isLast ? True : False, AnyPropertyType, &type, &format,
                       &property.count, &left, &bytes);
    property.bytes.reset(bytes);
    return property;
  }

  void Enter(const XClientMessageEvent& message) {
    drop_ = {};
    const bool hasList = (message.data.l[1] & 1) != 0;
    if (!hasList) return Offer(&message.data.l[2], 3);
    const Property list = Read(static_cast<Window>(message.data.l[0]), Intern("XdndTypeList"), false);
    Offer(reinterpret_cast<const long*>(list.bytes.get()), list.count);
  }

  void Offer(const long* types, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      if (types[i] == None) continue;
      const std::unique_ptr<char, XlibDeleter> name(XGetAtomName(display_, static_cast<Atom>(types[i])));
      drop_.offered.emplace_back(name.get());
    }
  }

  void Answer(const char* name, long source) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.display = display_;
    event.xclient.window = static_cast<Window>(source);
    event.xclient.message_type = Intern(name);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(window_);
    event.xclient.data.l[1] = isWilling_ ? 1 : 0;
    event.xclient.data.l[4] = static_cast<long>(Intern("XdndActionCopy"));
    XSendEvent(display_, static_cast<Window>(source), False, NoEventMask, &event);
    XFlush(display_);
  }

  void Fetch(const std::string& type) {
    XConvertSelection(display_, Intern("XdndSelection"), Intern(type), Intern(type), window_, CurrentTime);
    XFlush(display_);
    const auto end = Clock::now() + std::chrono::seconds(5);
    while (const std::optional<XEvent> event = NextEvent(end)) {
      if (event->type != SelectionNotify) continue;
      if (event->xselection.property == None) return;
      const Property property = Read(window_, event->xselection.property, true);
      drop_.contents[type].assign(reinterpret_cast<const char*>(property.bytes.get()), property.count);
      return;
    }
  }

  Display* display_;
  Window window_ = None;
  bool isWilling_ = true;
  ReceivedDrop drop_;
};

}  // namespace

std::optional<ReceivedDrop> ReceiveDrop(const std::string& title, int x, int y, bool isWilling,
                                        const std::vector<std::string>& wanted) {
  const std::unique_ptr<Display, DisplayCloser> display(XOpenDisplay(nullptr));
  if (!display) return std::nullopt;
  return Target(display.get(), title, x, y, isWilling).Receive(wanted);
}
