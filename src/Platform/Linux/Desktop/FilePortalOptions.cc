#include "Platform/Linux/Desktop/FilePortalOptions.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <vector>

#include "Platform/FilePanel.h"
#include "Platform/Linux/Base/GLibOwners.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

using Options = std::map<std::string, sdbus::Variant>;
using Pattern = sdbus::Struct<std::uint32_t, std::string>;
using Filter = sdbus::Struct<std::string, std::vector<Pattern>>;

constexpr std::uint32_t kGlob = 0;

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

}  // namespace

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

std::string SuggestedName(const FileRequest& request) {
  std::string name = request.name;
  std::replace(name.begin(), name.end(), '/', '-');
  std::replace(name.begin(), name.end(), '\0', '-');
  name.erase(0, name.find_first_not_of('.'));
  if (name.empty() || request.filters.empty() || Takes(request.filters.front(), name)) return name;
  return name + '.' + request.filters.front().extensions.front();
}

}  // namespace tessaro::platform
