#include "Platform/Linux/Base/FileURI.h"

#include "Base/TextPieces.h"
#include "Platform/Linux/Base/GLibOwners.h"

namespace tessaro::platform {

std::string PathOfFileURI(const std::string& uri) noexcept {
  char* named = nullptr;
  const GTextPtr path(g_filename_from_uri(uri.c_str(), &named, nullptr));
  const GTextPtr host(named);
  if (path == nullptr) return {};
  const bool isLocal = host == nullptr || *host.get() == '\0' || g_ascii_strcasecmp(host.get(), "localhost") == 0;
  return isLocal ? path.get() : "";
}

std::string FileURIOf(const std::string& path) noexcept {
  if (path.empty() || HasNul(path)) return {};
  const GTextPtr uri(g_filename_to_uri(AbsolutePath(path).c_str(), nullptr, nullptr));
  return uri != nullptr ? uri.get() : "";
}

std::string AbsolutePath(const std::string& path) noexcept {
  const GTextPtr absolute(g_canonicalize_filename(path.c_str(), nullptr));
  return absolute.get();
}

}  // namespace tessaro::platform
