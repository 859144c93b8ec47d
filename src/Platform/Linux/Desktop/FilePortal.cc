#include "Platform/Linux/Desktop/FilePortal.h"

#include <sdbus-c++/sdbus-c++.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

#include "Base/TsLog.h"
#include "Platform/FilePanel.h"
#include "Platform/Linux/Base/GLibOwners.h"
#include "Platform/Linux/Base/Paths.h"
#include "Platform/Linux/Base/SessionBus.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
constexpr char kFileChooser[] = "org.freedesktop.portal.FileChooser";
constexpr char kRequest[] = "org.freedesktop.portal.Request";
// The portal confirms the request before the dialog appears; the bus may have to start it first.
constexpr std::chrono::seconds kDeadline{10};

enum Response : std::uint32_t { kChosen = 0, kCancelled = 1 };

using Options = std::map<std::string, sdbus::Variant>;
using Pattern = sdbus::Struct<std::uint32_t, std::string>;
using Filter = sdbus::Struct<std::string, std::vector<Pattern>>;

constexpr std::uint32_t kGlob = 0;

std::string NewToken() {
  static int count = 0;
  return "tessaro" + std::to_string(++count);
}

// The portal derives the request's object path from the token. Subscribing before the call catches every response.
std::string RequestPath(const sdbus::IConnection& bus, const std::string& token) {
  std::string sender = bus.getUniqueName().substr(1);
  std::replace(sender.begin(), sender.end(), '.', '_');
  return std::string(kPortalPath) + "/request/" + sender + '/' + token;
}

std::vector<std::string> PathsIn(const Options& results) {
  std::vector<std::string> paths;
  const auto uris = results.find("uris");
  if (uris == results.end()) return paths;
  for (const std::string& uri : uris->second.get<std::vector<std::string>>()) {
    std::string path = PathOfFileURI(uri);
    // Script cannot represent a name that is not UTF-8.
    if (!path.empty() && g_utf8_validate(path.data(), static_cast<gssize>(path.size()), nullptr)) {
      paths.push_back(std::move(path));
    } else {
      TsLogTextError("Not a local file with a UTF-8 name: " + uri);
    }
  }
  return paths;
}

// ---- Options

// Portals match globs case-sensitively.
std::string GlobOf(const std::string& extension) {
  std::string glob = "*.";
  for (const char c : extension) {
    if (g_ascii_isalpha(c)) {
      glob += {'[', g_ascii_tolower(c), g_ascii_toupper(c), ']'};
    } else if (g_ascii_isalnum(c)) {
      glob += c;
    } else {
      glob += {'[', c, ']'};
    }
  }
  return glob;
}

Filter FilterOf(const FileFilter& filter) {
  std::vector<Pattern> patterns;
  for (const std::string& extension : filter.extensions) patterns.emplace_back(kGlob, GlobOf(extension));
  if (patterns.empty()) patterns.emplace_back(kGlob, "*");
  std::string name = filter.name;
  if (name.empty()) name = filter.extensions.empty() ? "*" : "*." + filter.extensions.front();
  return {std::move(name), std::move(patterns)};
}

// The portal takes paths as NUL-terminated byte arrays.
std::vector<std::uint8_t> Bytes(const std::string& path) {
  std::vector<std::uint8_t> bytes(path.begin(), path.end());
  bytes.push_back(0);
  return bytes;
}

void AddFilters(Options& options, const FileRequest& request) {
  std::vector<Filter> filters;
  for (const FileFilter& filter : request.filters) filters.push_back(FilterOf(filter));
  if (filters.empty()) return;
  options["current_filter"] = filters.front();
  options["filters"] = filters;
}

void AddPlace(Options& options, const FileRequest& request) {
  std::error_code error;
  const bool isFolder = fs::is_directory(request.folder, error);
  if (isFolder) options["current_folder"] = Bytes(request.folder);
  const std::string name = SuggestedName(request);
  if (request.kind != FileRequest::Kind::Save || name.empty()) return;
  options["current_name"] = name;
  const fs::path file = fs::path(request.folder) / name;
  if (isFolder && fs::is_regular_file(file, error)) options["current_file"] = Bytes(file);
}

bool Takes(const FileFilter& filter, const std::string& name) {
  if (filter.extensions.empty()) return true;
  return std::any_of(filter.extensions.begin(), filter.extensions.end(), [&](const std::string& extension) {
    const std::string end = '.' + extension;
    return name.size() > end.size() && g_ascii_strcasecmp(name.c_str() + name.size() - end.size(), end.c_str()) == 0;
  });
}

// The options of OpenFile and SaveFile that correspond to `request`.
Options PortalOptions(const FileRequest& request, const std::string& token) {
  Options options = {{"handle_token", token}, {"modal", true}};
  if (!request.button.empty()) options["accept_label"] = request.button;
  if (request.kind == FileRequest::Kind::Open) {
    options["multiple"] = request.allowsSeveral;
    options["directory"] = request.choosesFolders && !request.choosesFiles;
  }
  AddFilters(options, request);
  AddPlace(options, request);
  return options;
}

struct Dialog : std::enable_shared_from_this<Dialog> {
  explicit Dialog(PortalAnswer callback) : answer(std::move(callback)) {}
  Dialog(const Dialog&) = delete;
  Dialog& operator=(const Dialog&) = delete;
  ~Dialog() {
    if (!isEnded) Close();
  }

  void Ask(const std::string& parent, const FileRequest& fileRequest) noexcept {
    auto* bus = SessionBus::Shared().Connection();
    if (bus == nullptr) return End(Fail(SessionBus::Shared().LastError()));
    const auto asked = TryOnBus([&] { Call(*bus, parent, fileRequest); });
    if (!asked) return End(tl::unexpected(asked.error()));
    subscription = SessionBus::Shared().Listen({[] {},
                                                [this] {
                                                  owner.reset();
                                                  LosePortal("the session bus went away");
                                                }});
  }

  void Call(sdbus::IConnection& bus, const std::string& parent, const FileRequest& fileRequest) {
    const std::string token = NewToken();
    request = sdbus::createProxy(bus, kPortal, RequestPath(bus, token));
    request->uponSignal("Response")
        .onInterface(kRequest)
        .call([this](const sdbus::Error* error, std::uint32_t code, const Options& results) {
          if (error != nullptr) return End(Fail(error->getMessage()));
          Respond(code, results);
        });
    request->finishRegistration();
    owner = WatchOwner(bus, kPortal, [this](bool hasOwner) {
      if (!hasOwner) LosePortal("the portal went away");
    });
    portal = sdbus::createProxy(bus, kPortal, kPortalPath);
    portal->callMethodAsync(fileRequest.kind == FileRequest::Kind::Save ? "SaveFile" : "OpenFile")
        .onInterface(kFileChooser)
        .withTimeout(kDeadline)
        .withArguments(parent, fileRequest.title.empty() ? fileRequest.message : fileRequest.title,
                       PortalOptions(fileRequest, token))
        .uponReplyInvoke([this](const sdbus::Error* error, const sdbus::ObjectPath&) {
          if (error != nullptr) End(Fail(error->getMessage()));
        });
  }

  void Respond(std::uint32_t code, const Options& results) {
    if (code == kCancelled) return End(std::vector<std::string>());
    if (code != kChosen) return End(Fail(static_cast<int>(code), "the portal could not show the dialog"));
    // The response may have values of other types.
    std::vector<std::string> paths;
    const auto read = TryOnBus([&] { paths = PathsIn(results); });
    if (!read) return End(tl::unexpected(read.error()));
    End(std::move(paths));
  }

  // Calls `answer` on a later turn: the caller may be one of the bus objects that the owner destroys.
  void End(Result<std::vector<std::string>> paths) {
    if (isEnded) return;
    isEnded = true;
    if (!paths) Close();
    MainQueue::Shared().Post([weak = weak_from_this(), paths = std::move(paths)] {
      if (const auto dialog = weak.lock()) dialog->answer(paths);
    });
  }

  void LosePortal(const char* reason) {
    request.reset();
    portal.reset();
    End(Fail(reason));
  }

  void Close() noexcept {
    if (!request) return;
    const auto closed = TryOnBus([this] { request->callMethod("Close").onInterface(kRequest).dontExpectReply(); });
    if (!closed) TsLogTextWarning("Couldn't close a file dialog: " + closed.error().message);
  }

  PortalAnswer answer;
  std::unique_ptr<sdbus::IProxy> request;
  std::unique_ptr<sdbus::IProxy> portal;
  sdbus::Slot owner;
  SessionBus::Subscription subscription;
  bool isEnded = false;
};

}  // namespace

std::shared_ptr<void> AskPortal(const std::string& parent, const FileRequest& request, PortalAnswer answer) noexcept {
  auto dialog = std::make_shared<Dialog>(std::move(answer));
  dialog->Ask(parent, request);
  return dialog;
}

std::string SuggestedName(const FileRequest& request) {
  std::string name = request.name;
  std::replace(name.begin(), name.end(), '/', '-');
  std::replace(name.begin(), name.end(), '\0', '-');
  name.erase(0, name.find_first_not_of('.'));
  if (name.empty() || request.filters.empty() || Takes(request.filters.front(), name)) return name;
  return name + '.' + request.filters.front().extensions.front();
}

}  // namespace tessaro::platform
