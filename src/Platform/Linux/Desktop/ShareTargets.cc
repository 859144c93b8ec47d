#include "Platform/Linux/Desktop/ShareTargets.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Platform/Applications.h"
#include "Platform/Linux/Base/FileURI.h"
#include "Platform/Linux/Base/KeyFiles.h"
#include "Platform/Linux/Desktop/DesktopEntries.h"

namespace tessaro::platform {

namespace {

constexpr std::array kBluetoothSenders = {"bluetooth-sendto", "blueman-sendto"};
// These ignore attachments in mailto links.
constexpr std::array<std::string_view, 3> kThunderbirds = {"thunderbird", "betterbird", "icedove"};

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
  const DesktopEntryPtr application = FindDesktopEntry(identifier);
  return application != nullptr && (g_app_info_supports_files(G_APP_INFO(application.get())) ||
                                    g_app_info_supports_uris(G_APP_INFO(application.get())));
}

// The applications that open every one of the files.
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

// The command line of the application, without the placeholders for files.
std::vector<std::string> WordsOf(const std::string& identifier) {
  const DesktopEntryPtr application = FindDesktopEntry(identifier);
  const char* line = application != nullptr ? g_app_info_get_commandline(G_APP_INFO(application.get())) : nullptr;
  char** parsed = nullptr;
  if (line == nullptr || !g_shell_parse_argv(line, nullptr, &parsed, nullptr)) return {};
  std::vector<std::string> words = TextsOf(GStringListPtr(parsed));
  std::erase_if(words, [](const std::string& word) { return word.starts_with('%') || word.starts_with("@@"); });
  return words;
}

// Thunderbird's list syntax: commas separate, an apostrophe ends the list.
std::string ThunderbirdAttachments(const std::vector<std::string>& paths) {
  std::string list;
  for (const std::string& path : paths) {
    const std::string uri = FileURIOf(path);
    if (!list.empty() && !uri.empty()) list += ',';
    for (const char c : uri) {
      if (c == ',')
        list += "%2C";
      else if (c == '\'')
        list += "%27";
      else
        list += c;
    }
  }
  return "attachment='" + list + '\'';
}

std::string MailtoLink(const std::vector<std::string>& paths) {
  std::string link = "mailto:";
  for (const std::string& path : paths) {
    const GTextPtr escaped(g_uri_escape_string(AbsolutePath(path).c_str(), "/", FALSE));
    link += (link.ends_with(':') ? "?attach=" : "&attach=") + std::string(escaped.get());
  }
  return link;
}

Result<void> ShareByMail(const std::string& identifier, const std::vector<std::string>& paths) {
  if (!IsThunderbird(identifier)) return OpenURL(MailtoLink(paths), identifier);
  auto words = WordsOf(identifier);
  if (words.empty()) return Fail("the command line of " + identifier + " is malformed");
  words.insert(words.end(), {"-compose", ThunderbirdAttachments(paths)});
  return Spawn(words);
}

Result<void> ShareByBluetooth(const std::string& program, const std::vector<std::string>& paths) {
  std::vector<std::string> words = {program};
  for (const std::string& path : paths) words.push_back(AbsolutePath(path));
  return Spawn(words);
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

Result<void> ShareWith(const ShareTarget& target, const std::vector<std::string>& paths) noexcept {
  switch (target.kind) {
    case ShareTarget::Kind::Mail:
      return ShareByMail(target.identifier, paths);
    case ShareTarget::Kind::Bluetooth:
      return ShareByBluetooth(target.identifier, paths);
    case ShareTarget::Kind::Application:
      return OpenFiles(paths, target.identifier);
  }
  return Fail("unknown kind of target");
}

}  // namespace tessaro::platform
