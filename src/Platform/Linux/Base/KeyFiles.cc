#include "Platform/Linux/Base/KeyFiles.h"

#include <system_error>

#include "Platform/Files.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestFile = 1 << 20;

}  // namespace

GKeyFilePtr ReadKeyFile(const fs::path& file) {
  const auto text = ReadFile(file, kLongestFile);
  if (!text) return nullptr;
  constexpr auto kEverything = static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);
  GKeyFilePtr keys(g_key_file_new());
  if (!g_key_file_load_from_data(keys.get(), text->data(), text->size(), kEverything, nullptr)) return nullptr;
  return keys;
}

Result<void> WriteKeyFile(const fs::path& file, GKeyFile* keys) {
  std::error_code error;
  fs::create_directories(file.parent_path(), error);
  gsize length = 0;
  const GTextPtr text(g_key_file_to_data(keys, &length, nullptr));
  auto written = ReplaceFile(file, {text.get(), length}, NewFile::AsUsual);
  if (!written) return Fail(written.error().code, file.native() + ": " + written.error().message);
  return {};
}

std::string TextIn(GKeyFile* keys, const char* group, const char* key) {
  const GTextPtr text(g_key_file_get_string(keys, group, key, nullptr));
  return text != nullptr ? text.get() : "";
}

std::vector<std::string> ListIn(GKeyFile* keys, const char* group, const char* key) {
  return TextsOf(GStringListPtr(g_key_file_get_string_list(keys, group, key, nullptr, nullptr)));
}

std::vector<std::string> TextsOf(const GStringListPtr& list) {
  std::vector<std::string> texts;
  for (char** each = list.get(); each != nullptr && *each != nullptr; ++each) texts.emplace_back(g_strstrip(*each));
  return texts;
}

std::vector<std::string> CurrentDesktops() {
  const char* desktops = g_getenv("XDG_CURRENT_DESKTOP");
  return TextsOf(GStringListPtr(g_strsplit(desktops != nullptr ? desktops : "", ":", 0)));
}

}  // namespace tessaro::platform
