#include "Platform/macOS/AppleScriptText.h"

namespace tessaro::platform {

std::string AppleScriptText(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string InformationWindowScript(std::string_view path) {
  return "with timeout of 2 seconds\n"
         "tell application \"Finder\"\n"
         "   activate\n"
         "   open information window of document file POSIX file " +
         AppleScriptText(path) +
         "\n"
         "end tell\n"
         "end timeout\n";
}

}  // namespace tessaro::platform
