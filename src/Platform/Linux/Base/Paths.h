#pragma once

#include <filesystem>
#include <string>
#include <vector>

// Paths of this machine. Any thread.
namespace tessaro::platform {

// ---- The folders of the XDG base directory standard, which wants relative paths to be ignored

[[nodiscard]] std::filesystem::path ConfigHome();
[[nodiscard]] std::filesystem::path StateHome();
[[nodiscard]] std::filesystem::path DataHome();

// The system's directories, the most important one first.
[[nodiscard]] std::vector<std::filesystem::path> ConfigDirectories();
[[nodiscard]] std::vector<std::filesystem::path> DataDirectories();

// The absolute path in an environment variable; empty if missing.
[[nodiscard]] std::filesystem::path AbsolutePathIn(const char* variable);

// The folder that the module was loaded from; its programs lie beside it.
[[nodiscard]] std::filesystem::path OwnDirectory() noexcept;

// ---- file: URIs (RFC 8089)

// Empty for a URI that names no file of this machine: another scheme, another host, or a malformed one.
[[nodiscard]] std::string PathOfFileURI(const std::string& uri) noexcept;

// The URI of a path, made absolute. Empty for a path that is empty or contains NUL.
[[nodiscard]] std::string FileURIOf(const std::string& path) noexcept;

[[nodiscard]] std::string AbsolutePath(const std::string& path) noexcept;

}  // namespace tessaro::platform
