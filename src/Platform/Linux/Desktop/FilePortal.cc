#include "Platform/Linux/Desktop/FilePortal.h"

#include <glib.h>
#include <sdbus-c++/sdbus-c++.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <map>
#include <utility>

#include "Base/TsLog.h"
#include "Platform/FilePanel.h"
#include "Platform/Linux/Base/BusNames.h"
#include "Platform/Linux/Base/FileURI.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Platform/Linux/Desktop/FilePortalOptions.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
constexpr char kFileChooser[] = "org.freedesktop.portal.FileChooser";
constexpr char kRequest[] = "org.freedesktop.portal.Request";
// The portal confirms the request before the dialog appears; the bus may have to start it first.
constexpr std::chrono::seconds kDeadline{10};

enum Response : std::uint32_t { kChosen = 0, kCancelled = 1 };

using Results = std::map<std::string, sdbus::Variant>;

std::string NewToken() {
  static int count = 0;
  return "tessaro" + std::to_string(++count);
}

// Where the portal will put the object of a request, so that its response can't be missed.
std::string RequestPath(const sdbus::IConnection& bus, const std::string& token) {
  std::string sender = bus.getUniqueName().substr(1);
  std::replace(sender.begin(), sender.end(), '.', '_');
  return std::string(kPortalPath) + "/request/" + sender + '/' + token;
}

std::vector<std::string> PathsIn(const Results& results) {
  std::vector<std::string> paths;
  const auto uris = results.find("uris");
  if (uris == results.end()) return paths;
  for (const std::string& uri : uris->second.get<std::vector<std::string>>()) {
    std::string path = PathOfFileURI(uri);
    // Script could not name a file whose name is no UTF-8.
    if (!path.empty() && g_utf8_validate(path.data(), static_cast<gssize>(path.size()), nullptr)) {
      paths.push_back(std::move(path));
    } else {
      TsLogTextError("Not a local file with a UTF-8 name: " + uri);
    }
  }
  return paths;
}

}  // namespace

struct FilePortal::Dialog : std::enable_shared_from_this<FilePortal::Dialog> {
  explicit Dialog(Ended callback) : ended(std::move(callback)) {}

  void Ask(const std::string& parent, const FileRequest& request) noexcept {
    auto* bus = SessionBus::Shared().Connection();
    if (bus == nullptr) return End(Fail(SessionBus::Shared().LastError()));
    try {
      const std::string token = NewToken();
      path = RequestPath(*bus, token);
      const std::string fromPortal = std::string("type='signal',sender='") + kPortal + "',interface='" + kRequest;
      response = bus->addMatch(fromPortal + "',member='Response',path='" + path + "'",
                               [this](sdbus::Message& message) { Receive(message); });
      owner = WatchOwner(*bus, kPortal, [this](bool hasOwner) {
        if (!hasOwner) Vanish("the portal went away");
      });
      Call(*bus, parent, request, token);
    } catch (const sdbus::Error& error) {
      return End(Fail(error.getMessage()));
    }
    subscription = SessionBus::Shared().Listen({[] {},
                                                [this] {
                                                  response.reset();
                                                  owner.reset();
                                                  Vanish("the session bus went away");
                                                }});
  }

  void Call(sdbus::IConnection& bus, const std::string& parent, const FileRequest& request, const std::string& token) {
    portal = sdbus::createProxy(bus, kPortal, kPortalPath);
    portal->callMethodAsync(request.kind == FileRequest::Kind::Save ? "SaveFile" : "OpenFile")
        .onInterface(kFileChooser)
        .withTimeout(kDeadline)
        .withArguments(parent, request.title.empty() ? request.message : request.title, PortalOptions(request, token))
        .uponReplyInvoke([this](const sdbus::Error* error, const sdbus::ObjectPath&) {
          if (error != nullptr) End(Fail(error->getMessage()));
        });
  }

  void Receive(sdbus::Message& message) {
    std::uint32_t code = 0;
    Results results;
    try {
      message >> code >> results;
      if (code == kChosen) return End(PathsIn(results));
    } catch (const sdbus::Error& error) {
      return End(Fail(error.getMessage()));
    }
    if (code == kCancelled) return End(std::vector<std::string>());
    End(Fail("the portal could not show the dialog"));
  }

  // On a later turn: this may be the call of a slot that the owner destroys.
  void End(Result<std::vector<std::string>> paths) {
    if (isEnded) return;
    isEnded = true;
    if (!paths) Close();
    MainQueue::Shared().Post([weak = weak_from_this(), paths = std::move(paths)] {
      if (const auto dialog = weak.lock()) dialog->ended(paths);
    });
  }

  void Vanish(const char* reason) {
    path.clear();
    portal.reset();
    End(Fail(reason));
  }

  void Close() noexcept {
    auto* bus = SessionBus::Shared().Connection();
    if (bus == nullptr || path.empty()) return;
    try {
      sdbus::createProxy(*bus, kPortal, path)->callMethod("Close").onInterface(kRequest).dontExpectReply();
    } catch (const sdbus::Error& error) {
      TsLogTextWarning("Couldn't close a file dialog: " + error.getMessage());
    }
  }

  Ended ended;
  std::string path;
  sdbus::Slot response;
  sdbus::Slot owner;
  std::unique_ptr<sdbus::IProxy> portal;
  SessionBus::Subscription subscription;
  bool isEnded = false;
};

FilePortal::FilePortal(const std::string& parent, const FileRequest& request, Ended ended) noexcept
    : dialog_(std::make_shared<Dialog>(std::move(ended))) {
  dialog_->Ask(parent, request);
}

FilePortal::~FilePortal() {
  if (!dialog_->isEnded) dialog_->Close();
}

}  // namespace tessaro::platform
