#include "Platform/Sharing.h"

#include <gio/gdesktopappinfo.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "Platform/Applications.h"
#include "Platform/Linux/Base/GLibOwners.h"

namespace tessaro::platform {

namespace {

constexpr std::array kBluetoothSenders = {"bluetooth-sendto", "blueman-sendto"};
// These know nothing of attachments in mailto links.
constexpr std::array<std::string_view, 3> kThunderbirds = {"thunderbird", "betterbird", "icedove"};

GObjectPtr<GDesktopAppInfo> Find(const std::string& identifier) {
  return GObjectPtr<GDesktopAppInfo>(g_desktop_app_info_new((identifier + ".desktop").c_str()));
}

std::string Absolute(const std::string& path) {
  const GTextPtr absolute(g_canonicalize_filename(path.c_str(), nullptr));
  return absolute.get();
}

bool Start(const std::vector<std::string>& words) {
  std::vector<char*> pointers;
  for (const std::string& word : words) pointers.push_back(const_cast<char*>(word.c_str()));
  pointers.push_back(nullptr);
  constexpr auto kFlags =
      static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
  return g_spawn_async(nullptr, pointers.data(), nullptr, kFlags, nullptr, nullptr, nullptr, nullptr);
}

// ---- Targets

ShareTarget TargetOf(ShareTarget::Kind kind, const std::string& identifier) {
  const auto application = FindApplication(identifier);
  return {kind, identifier, application ? application->name : identifier};
}

void AddBluetooth(std::vector<ShareTarget>& targets) {
  for (const char* program : kBluetoothSenders) {
    const GTextPtr path(g_find_program_in_path(program));
    if (path == nullptr) continue;
    targets.push_back({ShareTarget::Kind::Bluetooth, path.get(), ""});
    return;
  }
}

bool TakesFiles(const std::string& identifier) {
  const auto application = Find(identifier);
  return application != nullptr && (g_app_info_supports_files(G_APP_INFO(application.get())) ||
                                    g_app_info_supports_uris(G_APP_INFO(application.get())));
}

// Those that open every one of the files.
std::vector<std::string> HandlersOfAll(const std::vector<std::string>& paths) {
  std::vector<std::string> types;
  for (const std::string& path : paths) types.push_back(ContentTypeOfFile(path));
  std::sort(types.begin(), types.end());
  types.erase(std::unique(types.begin(), types.end()), types.end());
  std::vector<std::string> handlers = HandlersOfContentType(types.front());
  for (const std::string& type : types) {
    const auto others = HandlersOfContentType(type);
    std::erase_if(handlers, [&](const std::string& handler) {
      return std::find(others.begin(), others.end(), handler) == others.end();
    });
  }
  return handlers;
}

// ---- Mail

bool IsThunderbird(const std::string& identifier) {
  const GTextPtr lower(g_ascii_strdown(identifier.c_str(), -1));
  return std::any_of(kThunderbirds.begin(), kThunderbirds.end(),
                     [&](std::string_view name) { return std::string_view(lower.get()).find(name) != name.npos; });
}

// The words that start the application, without those that stand for files.
std::vector<std::string> WordsOf(const std::string& identifier) {
  const auto application = Find(identifier);
  const char* line = application != nullptr ? g_app_info_get_commandline(G_APP_INFO(application.get())) : nullptr;
  int count = 0;
  char** parsed = nullptr;
  if (line == nullptr || !g_shell_parse_argv(line, &count, &parsed, nullptr)) return {};
  const GStringListPtr owner(parsed);
  std::vector<std::string> words;
  for (char** word = parsed; *word != nullptr; ++word) {
    if (**word != '%' && !g_str_has_prefix(*word, "@@")) words.emplace_back(*word);
  }
  return words;
}

// In a list of its own syntax, where commas separate and apostrophes end.
std::string ThunderbirdsAttachments(const std::vector<std::string>& paths) {
  std::string list;
  for (const std::string& path : paths) {
    const GTextPtr uri(g_filename_to_uri(Absolute(path).c_str(), nullptr, nullptr));
    if (uri == nullptr) continue;
    if (!list.empty()) list += ',';
    for (const char* c = uri.get(); *c != '\0'; ++c) {
      if (*c == ',')
        list += "%2C";
      else if (*c == '\'')
        list += "%27";
      else
        list += *c;
    }
  }
  return "attachment='" + list + '\'';
}

std::string MailtoLink(const std::vector<std::string>& paths) {
  std::string link = "mailto:";
  for (const std::string& path : paths) {
    const GTextPtr escaped(g_uri_escape_string(Absolute(path).c_str(), "/", FALSE));
    link += (link.ends_with(':') ? "?attach=" : "&attach=") + std::string(escaped.get());
  }
  return link;
}

bool ShareByMail(const std::string& identifier, const std::vector<std::string>& paths) {
  if (!IsThunderbird(identifier)) return OpenURL(MailtoLink(paths), identifier);
  auto words = WordsOf(identifier);
  if (words.empty()) return false;
  words.insert(words.end(), {"-compose", ThunderbirdsAttachments(paths)});
  return Start(words);
}

bool ShareByBluetooth(const std::string& program, const std::vector<std::string>& paths) {
  std::vector<std::string> words = {program};
  for (const std::string& path : paths) words.push_back(Absolute(path));
  return Start(words);
}

}  // namespace

std::vector<ShareTarget> ShareTargets(const std::vector<std::string>& paths) noexcept {
  using Kind = ShareTarget::Kind;
  if (paths.empty()) return {};
  std::vector<ShareTarget> targets;
  for (const std::string& identifier : HandlersOfScheme("mailto")) {
    targets.push_back(TargetOf(Kind::Mail, identifier));
  }
  AddBluetooth(targets);
  for (const std::string& identifier : HandlersOfAll(paths)) {
    if (TakesFiles(identifier)) targets.push_back(TargetOf(Kind::Application, identifier));
  }
  return targets;
}

bool ShareFiles(const ShareTarget& target, const std::vector<std::string>& paths) noexcept {
  switch (target.kind) {
    case ShareTarget::Kind::Mail:
      return ShareByMail(target.identifier, paths);
    case ShareTarget::Kind::Bluetooth:
      return ShareByBluetooth(target.identifier, paths);
    case ShareTarget::Kind::Application:
      return OpenFiles(paths, target.identifier);
  }
  return false;
}

}  // namespace tessaro::platform
