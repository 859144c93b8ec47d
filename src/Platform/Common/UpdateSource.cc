#include "Platform/Common/UpdateSource.h"

#include <sodium.h>

#include <algorithm>
#include <array>
#include <cctype>

#include "Base/TextPieces.h"

namespace tessaro::platform {

static_assert(std::tuple_size_v<UpdateKey> == crypto_sign_PUBLICKEYBYTES);
static_assert(std::tuple_size_v<UpdateSignature> == crypto_sign_BYTES);

namespace {

constexpr std::string_view kSecure = "https://";
constexpr std::string_view kPlain = "http://";
constexpr std::array<std::string_view, 3> kThisMachine = {"127.0.0.1", "localhost", "[::1]"};

// The authority component (host and port) of a URL; empty for another scheme.
std::string_view AuthorityOf(std::string_view url, std::string_view scheme) {
  if (!StartsWith(url, scheme)) return {};
  url.remove_prefix(scheme.size());
  return url.substr(0, url.find_first_of("/?#"));
}

// Nothing may follow the host's name but a port: a name could go on, or be that of a user at another host.
bool IsOnThisMachine(std::string_view authority) {
  return std::any_of(kThisMachine.begin(), kThisMachine.end(), [&](std::string_view host) {
    if (!StartsWith(authority, host)) return false;
    const std::string_view rest = authority.substr(host.size());
    const auto isDigit = [](unsigned char c) { return std::isdigit(c) != 0; };
    return rest.empty() || (rest.front() == ':' && std::all_of(rest.begin() + 1, rest.end(), isDigit));
  });
}

template <typename Bytes>
std::optional<Bytes> Decode(std::string_view base64) {
  Bytes bytes{};
  std::size_t length = 0;
  const int result = sodium_base642bin(bytes.data(), bytes.size(), base64.data(), base64.size(), " \t\r\n", &length,
                                       nullptr, sodium_base64_VARIANT_ORIGINAL);
  return result == 0 && length == bytes.size() ? std::optional(bytes) : std::nullopt;
}

}  // namespace

bool IsTrustworthyAddress(std::string_view url) noexcept {
  return !AuthorityOf(url, kSecure).empty() || IsOnThisMachine(AuthorityOf(url, kPlain));
}

std::string WithParameters(std::string_view url, const std::vector<FeedParameter>& parameters) {
  std::string result(url.substr(0, url.find('#')));
  char separator = result.find('?') == std::string::npos ? '?' : '&';
  for (const FeedParameter& parameter : parameters) {
    result += separator;
    result += PercentEncoded(parameter.key) + '=' + PercentEncoded(parameter.value);
    separator = '&';
  }
  return result;
}

std::optional<UpdateKey> UpdateKeyFrom(std::string_view base64) noexcept { return Decode<UpdateKey>(base64); }

std::optional<UpdateSignature> UpdateSignatureFrom(std::string_view base64) noexcept {
  return Decode<UpdateSignature>(base64);
}

bool IsSigned(std::span<const char> file, const UpdateSignature& signature, const UpdateKey& key) noexcept {
  // The library chooses its implementation for this processor.
  if (sodium_init() < 0) return false;
  return crypto_sign_verify_detached(signature.data(), reinterpret_cast<const unsigned char*>(file.data()), file.size(),
                                     key.data()) == 0;
}

}  // namespace tessaro::platform
