#include "Platform/Linux/Alerts/NotificationText.h"

#include <algorithm>

namespace tessaro::platform {

namespace {

// Servers lay all of a text out before they cut it.
constexpr std::size_t kMostBytes = 4000;
constexpr char kEllipsis[] = "…";

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// The bus refuses NUL, and markup can't hold the others.
bool IsControl(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return (code < 0x20U && byte != '\n' && byte != '\t') || code == 0x7FU;
}

std::string Shortened(std::string_view text) {
  if (text.size() <= kMostBytes) return std::string(text);
  std::size_t end = kMostBytes;
  while (end > 0 && IsContinuation(text[end])) --end;
  return std::string(text.substr(0, end)) + kEllipsis;
}

}  // namespace

std::string DisplayableText(std::string_view text) {
  std::string shown = Shortened(text);
  shown.erase(std::remove_if(shown.begin(), shown.end(), IsControl), shown.end());
  return shown;
}

std::string DisplayableMarkup(std::string_view text) {
  std::string markup;
  for (const char c : DisplayableText(text)) {
    switch (c) {
      case '&':
        markup += "&amp;";
        break;
      case '<':
        markup += "&lt;";
        break;
      case '>':
        markup += "&gt;";
        break;
      default:
        markup += c;
    }
  }
  return markup;
}

}  // namespace tessaro::platform
