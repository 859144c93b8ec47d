#pragma once

#include <string>

// file: URIs (RFC 8089). Any thread; nothing throws.
namespace tessaro::platform {

// Empty for a URI that names no file of this machine: another scheme, another host, or a malformed one.
[[nodiscard]] std::string PathOfFileURI(const std::string& uri) noexcept;

// The URI of a path, made absolute. Empty for a path that is empty or contains NUL.
[[nodiscard]] std::string FileURIOf(const std::string& path) noexcept;

[[nodiscard]] std::string AbsolutePath(const std::string& path) noexcept;

}  // namespace tessaro::platform
