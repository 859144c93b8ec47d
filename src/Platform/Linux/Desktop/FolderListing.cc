#include "Platform/Linux/Desktop/FolderListing.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <tuple>

#include "Platform/Linux/Base/GLibOwners.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestName = 255;

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && g_ascii_strncasecmp(a.data(), b.data(), a.size()) == 0;
}

// False for what nobody chooses, and what script could not name.
bool Read(const fs::path& path, FolderEntry& entry) {
  entry.name = path.filename();
  struct stat status;
  if (!g_utf8_validate(entry.name.data(), static_cast<gssize>(entry.name.size()), nullptr) ||
      stat(path.c_str(), &status) != 0) {
    return false;
  }
  entry.isFolder = S_ISDIR(status.st_mode);
  entry.size = static_cast<std::uintmax_t>(status.st_size);
  entry.changed = status.st_mtime;
  return entry.isFolder || S_ISREG(status.st_mode);
}

bool IsShown(const FolderEntry& entry, const FolderView& view) {
  if (!view.showsHidden && entry.name.starts_with('.')) return false;
  return entry.isFolder || (view.showsFiles && HasExtension(entry.name, view.extensions));
}

// As much of the text as fits, without half a character at its end.
std::string Shortened(const std::string& text, std::size_t bytes) {
  if (text.size() <= bytes) return text;
  const char* end = text.data() + bytes;
  const gchar* valid = nullptr;
  g_utf8_validate(text.data(), end - text.data(), &valid);
  return {text.data(), static_cast<std::size_t>(valid - text.data())};
}

}  // namespace

bool HasExtension(const std::string& name, const std::vector<std::string>& extensions) noexcept {
  if (extensions.empty()) return true;
  return std::any_of(extensions.begin(), extensions.end(), [&](const std::string& extension) {
    const std::size_t length = extension.size() + 1;
    if (name.size() <= length || name[name.size() - length] != '.') return false;
    return EqualIgnoringCase(std::string_view(name).substr(name.size() - extension.size()), extension);
  });
}

FolderListing ListFolder(const fs::path& folder, const FolderView& view) noexcept {
  FolderListing listing;
  for (fs::directory_iterator each(folder, listing.error), end; !listing.error && each != end;
       each.increment(listing.error)) {
    FolderEntry entry;
    if (!Read(each->path(), entry) || !IsShown(entry, view)) continue;
    const GTextPtr order(g_utf8_collate_key_for_filename(entry.name.c_str(), -1));
    entry.order = order.get();
    listing.entries.push_back(std::move(entry));
  }
  std::sort(listing.entries.begin(), listing.entries.end(), [](const FolderEntry& a, const FolderEntry& b) {
    return std::tie(b.isFolder, a.order, a.name) < std::tie(a.isFolder, b.order, b.name);
  });
  return listing;
}

std::string HarmlessName(const std::string& name) noexcept {
  std::string harmless = name;
  for (char& c : harmless) {
    if (c == '/' || static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = '-';
  }
  harmless.erase(0, std::min(harmless.find_first_not_of(". "), harmless.size()));
  if (harmless.size() <= kLongestName) return harmless;
  // Of a name that is too long, the end says what it is.
  const fs::path extension = fs::path(harmless).extension();
  if (extension.native().size() > kLongestName / 4) return Shortened(harmless, kLongestName);
  return Shortened(harmless, kLongestName - extension.native().size()) + extension.native();
}

std::string SizeText(std::uintmax_t bytes) noexcept {
  const GTextPtr text(g_format_size(bytes));
  return text.get();
}

std::string TimeText(std::time_t time) noexcept {
  std::array<char, 64> text;
  std::tm parts;
  if (localtime_r(&time, &parts) == nullptr) return {};
  return {text.data(), std::strftime(text.data(), text.size(), "%x %H:%M", &parts)};
}

}  // namespace tessaro::platform
