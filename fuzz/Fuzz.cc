// One program for all doors: it fuzzes the one that it is named after. See CONTRIBUTING.md.

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "Doors.h"
#include "Platform/Common/AutoreleaseScope.h"

namespace {

struct Door {
  std::string_view name;
  void (*enter)(std::string_view bytes);
};

constexpr Door kDoors[] = {
    {"account-store", doors::AccountStore},
    {"body", doors::Body},
    {"color", doors::Color},
    {"crash-record", doors::CrashRecord},
    {"desktop-entry", doors::DesktopEntry},
    {"feed", doors::Feed},
    {"feed-address", doors::FeedAddress},
    {"html", doors::HTML},
    {"json", doors::JSON},
    {"kept-alert", doors::KeptAlert},
    {"mailto", doors::Mailto},
    {"notification-text", doors::NotificationText},
    {"pasteboard", doors::Pasteboard},
    {"preferences", doors::Preferences},
    {"property-list", doors::PropertyList},
    {"recipients", doors::Recipients},
    {"request", doors::Request},
    {"scripting", doors::Scripting},
    {"shortcut", doors::Shortcut},
    {"workspace-store", doors::WorkspaceStore},
    {"zip", doors::Zip},
};

const Door* door = nullptr;

}  // namespace

const std::filesystem::path& doors::Folder() {
  static const std::filesystem::path folder = std::filesystem::temp_directory_path() / std::to_string(getpid());
  static const bool isMade = std::filesystem::create_directories(folder);
  static_cast<void>(isMade);
  return folder;
}

std::filesystem::path doors::FileWith(std::string_view bytes, std::string_view name) {
  std::filesystem::path file = Folder() / name;
  std::ofstream(file, std::ios::binary).write(bytes.data(), std::ssize(bytes));
  return file;
}

extern "C" int LLVMFuzzerInitialize(int*, char*** arguments) {
  const std::string name = std::filesystem::path((*arguments)[0]).filename();
  const auto* found =
      std::find_if(std::begin(kDoors), std::end(kDoors), [&](const Door& each) { return each.name == name; });
  if (found == std::end(kDoors)) {
    for (const Door& each : kDoors) std::printf("%s\n", each.name.data());
    std::exit(0);
  }
  door = found;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  // As every entry of the module does, this one takes Objective-C exceptions.
  tessaro::platform::WithAutoreleasePool([&] { door->enter(bytes); });
  return 0;
}
