#include "native/DraggedFiles.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <poll.h>

#include <charconv>
#include <chrono>
#include <memory>
#include <optional>
#include <string_view>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kDeadline = std::chrono::milliseconds(500);
constexpr long kMostWords = 1 << 20;

struct DisplayCloser {
  void operator()(Display* display) const { XCloseDisplay(display); }
};

struct XlibDeleter {
  void operator()(unsigned char* memory) const { XFree(memory); }
};

// A client of the X server beside the application's own, so that neither takes events from the other.
class SelectionReader {
 public:
  SelectionReader() : display_(XOpenDisplay(nullptr)) {
    if (display_) window_ = XCreateSimpleWindow(display_.get(), DefaultRootWindow(display_.get()), 0, 0, 1, 1, 0, 0, 0);
  }

  [[nodiscard]] std::optional<std::string> Read(const char* selection, const char* target) {
    if (!display_) return std::nullopt;
    const Atom property = Intern("TESSARO_DRAGGED_FILES");
    XConvertSelection(display_.get(), Intern(selection), Intern(target), property, window_, CurrentTime);
    XFlush(display_.get());
    if (!WaitForAnswer()) return std::nullopt;
    return ReadProperty(property);
  }

 private:
  Atom Intern(const char* name) { return XInternAtom(display_.get(), name, False); }

  bool WaitForAnswer() {
    const auto end = Clock::now() + kDeadline;
    for (auto now = Clock::now(); now < end; now = Clock::now()) {
      XEvent event;
      if (XCheckTypedWindowEvent(display_.get(), window_, SelectionNotify, &event)) {
        return event.xselection.property != None;
      }
      pollfd readable{.fd = ConnectionNumber(display_.get()), .events = POLLIN, .revents = 0};
      poll(&readable, 1, static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(end - now).count()));
    }
    return false;
  }

  std::optional<std::string> ReadProperty(Atom property) {
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* bytes = nullptr;
    XGetWindowProperty(display_.get(), window_, property, 0, kMostWords, True, AnyPropertyType, &type, &format, &count,
                       &left, &bytes);
    const std::unique_ptr<unsigned char, XlibDeleter> owner(bytes);
    if (bytes == nullptr || format != 8) return std::nullopt;
    return std::string(reinterpret_cast<const char*>(bytes), count);
  }

  std::unique_ptr<Display, DisplayCloser> display_;
  Window window_ = None;
};

std::optional<std::string> PercentDecoded(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    if (text.front() != '%') {
      result += text.front();
      text.remove_prefix(1);
      continue;
    }
    unsigned value = 0;
    if (text.size() < 3) return std::nullopt;
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + 3, value, 16);
    if (error != std::errc() || end != text.data() + 3 || value == 0) return std::nullopt;
    result += static_cast<char>(value);
    text.remove_prefix(3);
  }
  return result;
}

std::optional<std::string> LocalPath(std::string_view uri) {
  for (const std::string_view prefix : {"file://localhost/", "file:///"}) {
    if (uri.starts_with(prefix)) return PercentDecoded(uri.substr(prefix.size() - 1));
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::string> FetchDraggedFiles() {
  return LocalPathsOfURIList(SelectionReader().Read("XdndSelection", "text/uri-list").value_or(""));
}

std::vector<std::string> LocalPathsOfURIList(const std::string& list) {
  std::vector<std::string> paths;
  std::string_view rest = list;
  while (!rest.empty()) {
    const auto end = rest.find_first_of("\r\n");
    if (auto path = LocalPath(rest.substr(0, end))) paths.push_back(*std::move(path));
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  }
  return paths;
}
