#include "native/FileDrag.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <poll.h>

#include <array>
#include <chrono>
#include <optional>
#include <string_view>
#include <thread>

#include "Base/Owned.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kDeadline = std::chrono::seconds(5);
constexpr long kProtocolVersion = 5;
constexpr int kMoves = 20;
constexpr auto kMoveInterval = std::chrono::milliseconds(25);

std::string FileURI(const std::string& path) {
  static constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
  static constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string uri = "file://";
  for (const char character : path) {
    const auto byte = static_cast<unsigned char>(character);
    if (kPlain.find(character) != std::string_view::npos) {
      uri += character;
    } else {
      uri.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
  }
  return uri;
}

std::string URIList(const std::vector<std::string>& paths) {
  std::string list;
  for (const std::string& path : paths) list += FileURI(path) + "\r\n";
  return list;
}

// The source's side of the XDND protocol.
class DragSource {
 public:
  DragSource(Display* display, std::string list) : display_(display), list_(std::move(list)) {
    window_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 1, 1, 0, 0, 0);
    XSetSelectionOwner(display_, selection_, window_, CurrentTime);
  }

  DragOutcome Drop(int x, int y) {
    const std::optional<Window> target = FindTarget(x, y);
    if (!target) return DragOutcome::kNoTarget;
    target_ = *target;

    Send("XdndEnter", {0, kProtocolVersion << 24, static_cast<long>(uriList_), 0, 0});
    if (const DragOutcome outcome = Hover(x, y); outcome != DragOutcome::kAccepted) {
      Send("XdndLeave", {});
      return outcome;
    }
    Send("XdndDrop", {0, 0, static_cast<long>(CurrentTime), 0, 0});
    return WaitFor("XdndFinished") ? DragOutcome::kAccepted : DragOutcome::kNoAnswer;
  }

 private:
  // A pointer crosses a window in many small moves, and a target may accept only after some of them.
  DragOutcome Hover(int x, int y) {
    const auto point = static_cast<long>(x) << 16 | y;
    const auto action = static_cast<long>(Intern("XdndActionCopy"));
    for (int move = 0; move < kMoves; ++move) {
      Send("XdndPosition", {0, 0, point, static_cast<long>(CurrentTime), action});
      const std::optional<XClientMessageEvent> status = WaitFor("XdndStatus");
      if (!status) return DragOutcome::kNoAnswer;
      if ((status->data.l[1] & 1) != 0) return DragOutcome::kAccepted;
      std::this_thread::sleep_for(kMoveInterval);
    }
    return DragOutcome::kRefused;
  }

  Atom Intern(const char* name) { return XInternAtom(display_, name, False); }

  bool TakesDrags(Window window) {
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* bytes = nullptr;
    XGetWindowProperty(display_, window, Intern("XdndAware"), 0, 1, False, AnyPropertyType, &type, &format, &count,
                       &left, &bytes);
    if (bytes != nullptr) XFree(bytes);
    return type != None;
  }

  std::optional<Window> FindTarget(int x, int y) {
    const Window root = DefaultRootWindow(display_);
    for (Window window = root; window != None;) {
      if (window != root && TakesDrags(window)) return window;
      int unused = 0;
      Window child = None;
      if (!XTranslateCoordinates(display_, root, window, x, y, &unused, &unused, &child)) break;
      window = child;
    }
    return std::nullopt;
  }

  // The first of the five values is the source's window.
  void Send(const char* message, std::array<long, 5> values) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.display = display_;
    event.xclient.window = target_;
    event.xclient.message_type = Intern(message);
    event.xclient.format = 32;
    values[0] = static_cast<long>(window_);
    for (std::size_t i = 0; i < values.size(); ++i) event.xclient.data.l[i] = values[i];
    XSendEvent(display_, target_, False, NoEventMask, &event);
    XFlush(display_);
  }

  std::optional<XClientMessageEvent> WaitFor(const char* message) {
    const Atom wanted = Intern(message);
    const auto end = Clock::now() + kDeadline;
    for (auto now = Clock::now(); now < end; now = Clock::now()) {
      while (XPending(display_) > 0) {
        XEvent event;
        XNextEvent(display_, &event);
        if (event.type == SelectionRequest) Serve(event.xselectionrequest);
        if (event.type == ClientMessage && event.xclient.message_type == wanted) return event.xclient;
      }
      pollfd readable{.fd = ConnectionNumber(display_), .events = POLLIN, .revents = 0};
      poll(&readable, 1, static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(end - now).count()));
    }
    return std::nullopt;
  }

  void Serve(const XSelectionRequestEvent& request) {
    XEvent answer{};
    answer.xselection.type = SelectionNotify;
    answer.xselection.requestor = request.requestor;
    answer.xselection.selection = request.selection;
    answer.xselection.target = request.target;
    answer.xselection.time = request.time;
    answer.xselection.property = None;
    if (request.target == uriList_) {
      XChangeProperty(display_, request.requestor, request.property, uriList_, 8, PropModeReplace,
                      reinterpret_cast<const unsigned char*>(list_.data()), static_cast<int>(list_.size()));
      answer.xselection.property = request.property;
    }
    XSendEvent(display_, request.requestor, False, NoEventMask, &answer);
    XFlush(display_);
  }

  Display* display_;
  std::string list_;
  const Atom selection_ = Intern("XdndSelection");
  const Atom uriList_ = Intern("text/uri-list");
  Window window_ = None;
  Window target_ = None;
};

}  // namespace

DragOutcome DragFiles(int x, int y, const std::vector<std::string>& paths) {
  const Owned<Display, XCloseDisplay> display(XOpenDisplay(nullptr));
  if (!display) return DragOutcome::kNoDisplay;
  return DragSource(display.get(), URIList(paths)).Drop(x, y);
}
