#include "Platform/Common/UpdateSignature.h"

#include <sodium.h>

namespace tessaro::platform {

static_assert(std::tuple_size_v<UpdateKey> == crypto_sign_PUBLICKEYBYTES);
static_assert(std::tuple_size_v<UpdateSignature> == crypto_sign_BYTES);

namespace {

template <typename Bytes>
std::optional<Bytes> Decode(std::string_view base64) {
  Bytes bytes{};
  std::size_t length = 0;
  const int result = sodium_base642bin(bytes.data(), bytes.size(), base64.data(), base64.size(), " \t\r\n", &length,
                                       nullptr, sodium_base64_VARIANT_ORIGINAL);
  return result == 0 && length == bytes.size() ? std::optional(bytes) : std::nullopt;
}

}  // namespace

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
