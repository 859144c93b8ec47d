#include "Platform/Linux/Desktop/DesktopEntries.h"

#include <chrono>

#include "Base/Lifetime.h"
#include "Base/TextPieces.h"
#include "Platform/TaskQueues.h"

namespace tessaro::platform {

namespace {

constexpr auto kSpawnFlags =
    static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);

constexpr std::chrono::seconds kLaunchDeadline{2};

using URIListPtr = std::unique_ptr<GList, decltype([](GList* list) { g_list_free_full(list, g_free); })>;

Result<void> Outcome(bool succeeded, GError* raised) {
  const GErrorPtr error(raised);
  if (succeeded) return {};
  return Fail(error != nullptr ? error->message : "the program can't be started");
}

// GIO first connects to the session bus, without a deadline.
Result<void> Launch(GDesktopAppInfo* entry, const std::vector<std::string>& uris) {
  GList* list = nullptr;
  for (const std::string& uri : uris) list = g_list_append(list, g_strdup(uri.c_str()));
  const URIListPtr owner(list);
  GError* error = nullptr;
  const bool isLaunched = g_desktop_app_info_launch_uris_as_manager(entry, list, nullptr, kSpawnFlags, nullptr, nullptr,
                                                                    nullptr, nullptr, &error);
  return Outcome(isLaunched, error);
}

}  // namespace

std::string IdentifierOf(std::string_view desktopFile) {
  if (desktopFile.ends_with(kDesktopExtension)) desktopFile.remove_suffix(kDesktopExtension.size());
  return std::string(desktopFile);
}

DesktopEntryPtr FindDesktopEntry(std::string_view identifier) {
  if (identifier.empty() || HasNul(identifier)) return nullptr;
  return DesktopEntryPtr(g_desktop_app_info_new((std::string(identifier) + std::string(kDesktopExtension)).c_str()));
}

DesktopEntryPtr DesktopEntryAt(const std::string& path) {
  if (HasNul(path)) return nullptr;
  if (path.starts_with('/')) return DesktopEntryPtr(g_desktop_app_info_new_from_filename(path.c_str()));
  return FindDesktopEntry(IdentifierOf(path));
}

Result<void> LaunchEntry(GDesktopAppInfo* entry, const std::vector<std::string>& uris) {
  if (entry == nullptr) return Fail("no such application");
  static Forever<SerialQueue> launches;
  const std::shared_ptr<GDesktopAppInfo> owned(static_cast<GDesktopAppInfo*>(g_object_ref(entry)), g_object_unref);
  const auto launched =
      WithDeadline<Result<void>>(*launches, kLaunchDeadline, [owned, uris] { return Launch(owned.get(), uris); });
  return launched ? *launched : Fail("the session bus does not answer");
}

Result<void> Spawn(const std::vector<std::string>& words) {
  std::vector<char*> pointers;
  for (const std::string& word : words) pointers.push_back(const_cast<char*>(word.c_str()));
  pointers.push_back(nullptr);
  GError* error = nullptr;
  const bool isStarted =
      g_spawn_async(nullptr, pointers.data(), nullptr, kSpawnFlags, nullptr, nullptr, nullptr, &error);
  return Outcome(isStarted, error);
}

}  // namespace tessaro::platform
