#include <cmath>
#include <fstream>
#include <string>

#include "Doors.h"
#include "Platform/Linux/Alerts/AlertFiles.h"
#include "Platform/Linux/Base/KeyFiles.h"
#include "Platform/Linux/Desktop/DesktopEntries.h"
// The parser of login items is private to the body.
#include "Platform/Linux/Desktop/LoginItems.cc"
#include "Platform/ZipArchive.h"

namespace platform = tessaro::platform;
namespace fs = std::filesystem;

namespace doors {

namespace {

bool IsBelow(const fs::path& path, const fs::path& folder) {
  const fs::path relative = path.lexically_relative(folder);
  return !relative.empty() && *relative.begin() != "..";
}

}  // namespace

void Zip(std::string_view bytes) {
  const fs::path archive = FileWith(bytes, "archive.zip");
  const fs::path outer = Folder() / "outer";
  const fs::path folder = outer / "folder";
  fs::create_directories(outer);
  static_cast<void>(platform::UnpackZip(archive, folder, {}));
  for (const auto& each : fs::recursive_directory_iterator(outer)) {
    Expect(each.path() == folder || IsBelow(each.path(), folder), "archives stay below their folder");
    Expect(each.is_directory() || (each.is_regular_file() && !each.is_symlink()), "archives have files only");
  }
  fs::remove_all(outer);
}

void DesktopEntry(std::string_view bytes) {
  const fs::path file = FileWith(bytes, "entry.desktop");
  const auto installed = platform::DesktopEntryAt(file.native());
  if (installed != nullptr) static_cast<void>(g_app_info_get_commandline(G_APP_INFO(installed.get())));
  if (const auto keys = platform::ReadKeyFile(file)) {
    static_cast<void>(platform::ListIn(keys.get(), "Default Applications", "text/html"));
  }
  const platform::GKeyFilePtr entry = platform::ReadEntry(file);
  if (!entry) return;
  static_cast<void>(platform::DisplayNameOf(entry));
  static_cast<void>(platform::ProgramIn(entry));
  const bool wasOn = platform::IsSwitchedOn(entry);
  platform::Hide(entry);
  Expect(!platform::IsSwitchedOn(entry), "a hidden entry is switched off");
  platform::Show(entry);
  Expect(platform::IsSwitchedOn(entry) || !wasOn, "an entry can be switched on again");
  const fs::path copy = Folder() / "copy.desktop";
  Expect(platform::WriteKeyFile(copy, entry.get()).has_value(), "an entry can be written");
  const auto again = platform::ReadEntry(copy);
  Expect(again && platform::DisplayNameOf(again) == platform::DisplayNameOf(entry), "what is written can be read");
}

void KeptAlert(std::string_view bytes) {
  const fs::path folder = Folder() / "alerts";
  fs::create_directories(folder);
  std::ofstream(folder / "key.alert", std::ios::binary).write(bytes.data(), std::ssize(bytes));
  platform::AlertFiles files(folder);
  for (const platform::KeptAlert& kept : files.All()) {
    Expect(kept.due || kept.shown, "a kept alert is scheduled or on screen");
    Expect(!kept.due || std::isfinite(kept.due->count()), "a scheduled alert is due at a moment");
    Expect(files.Keep(kept), "an alert can be kept");
    const auto again = files.All();
    Expect(again.size() == 1 && again[0].alert.text == kept.alert.text, "what is kept can be read");
  }
}

}  // namespace doors
