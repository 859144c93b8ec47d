#include "Platform/Linux/Network/Transfers/RequestSyntax.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cctype>

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
  return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) {
    return std::isalnum(c) != 0 || kTokenCharacters.find(static_cast<char>(c)) != std::string_view::npos;
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
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto authority = url.find("//") + 2;
  std::string encoded = url.substr(0, url.find_first_of("/?#", authority));
  for (const unsigned char c : url.substr(encoded.size())) {
    if (c < 0x80) {
      encoded += static_cast<char>(c);
    } else {
      encoded.append({'%', kDigits[c >> 4], kDigits[c & 15]});
    }
  }
  return encoded;
}

bool StartsWith(std::string_view text, std::string_view lowerCasePrefix) {
  return text.size() >= lowerCasePrefix.size() &&
         strncasecmp(text.data(), lowerCasePrefix.data(), lowerCasePrefix.size()) == 0;
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n";
  const auto first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

}  // namespace tessaro::platform
