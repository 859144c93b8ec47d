#pragma once

#include <gio/gdesktopappinfo.h>

#include <string>
#include <string_view>
#include <vector>

#include "Base/Result.h"
#include "Platform/Linux/Base/GLibOwners.h"

// Installed applications as their desktop entries describe them, and starting programs. Any thread; nothing throws.
namespace tessaro::platform {

using DesktopEntryPtr = GObjectPtr<GDesktopAppInfo>;

inline constexpr std::string_view kDesktopExtension = ".desktop";

// The name of a desktop file without its extension.
[[nodiscard]] std::string IdentifierOf(std::string_view desktopFile);

// nullptr when there is no such application.
[[nodiscard]] DesktopEntryPtr FindDesktopEntry(std::string_view identifier);

// The path of a desktop file, or an identifier.
[[nodiscard]] DesktopEntryPtr DesktopEntryAt(const std::string& path);

// Starts the application with the URIs, if any; waits at most two seconds for a silent session bus. The process is no
// child of ours; its output is dropped.
[[nodiscard]] Result<void> LaunchEntry(GDesktopAppInfo* entry, const std::vector<std::string>& uris);

// Starts a program with its arguments, without a shell.
[[nodiscard]] Result<void> Spawn(const std::vector<std::string>& words);

}  // namespace tessaro::platform
