#include "Platform/Linux/Network/Transfers/RequestSyntax.h"

#include <strings.h>

#include <algorithm>
#include <array>

#include "Base/TextPieces.h"

namespace tessaro::platform {

namespace {

constexpr std::string_view kTokenCharacters = "!#$%&'*+-.^_`|~";
constexpr std::array<std::string_view, 2> kFramingHeaders = {"content-length", "transfer-encoding"};
constexpr std::array<std::string_view, 3> kMethodsWithBody = {"POST", "PUT", "PATCH"};
constexpr std::array<long, 5> kRedirects = {301, 302, 303, 307, 308};

template <typename List, typename Value>
bool Contains(const List& list, const Value& value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

}  // namespace

bool IsToken(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return IsLetterOrDigit(c) || kTokenCharacters.find(c) != std::string_view::npos;
  });
}

bool IsHeaderValue(std::string_view text) {
  return text.find_first_of(std::string_view("\0\r\n", 3)) == std::string_view::npos;
}

bool IsFramingHeader(std::string_view name) {
  return std::any_of(kFramingHeaders.begin(), kFramingHeaders.end(), [name](std::string_view header) {
    return name.size() == header.size() && StartsWith(name, header);
  });
}

bool AnnouncesBody(std::string_view method) { return Contains(kMethodsWithBody, method); }

bool IsRedirect(long statusCode) { return Contains(kRedirects, statusCode); }

std::string EncodedURL(const std::string& url) {
  const auto authority = url.find("//") + 2;
  std::string encoded = url.substr(0, url.find_first_of("/?#", authority));
  for (const char c : url.substr(encoded.size())) {
    encoded += static_cast<unsigned char>(c) < 0x80 ? std::string(1, c) : PercentEscape(c);
  }
  return encoded;
}

}  // namespace tessaro::platform
