#include "Platform/macOS/CFRef.h"

namespace tessaro::platform {

CFRef<CFStringRef> NewCFString(std::string_view utf8) {
  return CFRef(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(utf8.data()),
                                       static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false));
}

std::optional<std::string> TextOf(CFTypeRef object) {
  if (object == nullptr || CFGetTypeID(object) != CFStringGetTypeID()) return std::nullopt;
  const auto string = static_cast<CFStringRef>(object);
  const CFRange all = CFRangeMake(0, CFStringGetLength(string));
  CFIndex length = 0;
  CFStringGetBytes(string, all, kCFStringEncodingUTF8, '?', false, nullptr, 0, &length);
  std::string text(static_cast<std::size_t>(length), '\0');
  CFStringGetBytes(string, all, kCFStringEncodingUTF8, '?', false, reinterpret_cast<UInt8*>(text.data()), length,
                   nullptr);
  return text;
}

CFRef<CFURLRef> NewFileURL(std::string_view path) {
  return CFRef(CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()),
                                                       static_cast<CFIndex>(path.size()), false));
}

}  // namespace tessaro::platform
