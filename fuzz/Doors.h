#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>

// Entrances for foreign bytes. Each takes any input; a violated rule of the entrance's contract aborts.
namespace doors {

// Texts.
void Feed(std::string_view bytes);
void FeedAddress(std::string_view bytes);
void Mailto(std::string_view bytes);
void HTML(std::string_view bytes);
void CrashRecord(std::string_view bytes);
void NotificationText(std::string_view bytes);
void Request(std::string_view bytes);
void Body(std::string_view bytes);

// Files.
void Zip(std::string_view bytes);
void DesktopEntry(std::string_view bytes);
void KeptAlert(std::string_view bytes);

// Cocoa objects.
void JSON(std::string_view bytes);
void AccountStore(std::string_view bytes);
void Color(std::string_view bytes);
void WorkspaceStore(std::string_view bytes);
void Preferences(std::string_view bytes);
void PropertyList(std::string_view bytes);
void Shortcut(std::string_view bytes);
void Recipients(std::string_view bytes);
void Pasteboard(std::string_view bytes);

// Arguments from the session bus.
void Scripting(std::string_view bytes);

// Makes a message to script, and forgets earlier ones.
[[nodiscard]] std::int64_t MakeOnlyMessage();

inline void Expect(bool holds, const char* rule) {
  if (holds) return;
  std::fprintf(stderr, "violated: %s\n", rule);
  std::abort();
}

// A folder of this process, for input that has to be in a file. The caller of the program removes it.
[[nodiscard]] const std::filesystem::path& Folder();

// The path of a file with these bytes in that folder.
[[nodiscard]] std::filesystem::path FileWith(std::string_view bytes, std::string_view name);

}  // namespace doors
