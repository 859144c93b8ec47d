#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Updater.h"

// Checks the address and the signature of updates.
namespace tessaro::platform {

// Whether feeds and files may come from this address: over TLS, or from this very machine.
[[nodiscard]] bool IsTrustworthyAddress(std::string_view url) noexcept;

// The address with the parameters appended to its query, in order.
[[nodiscard]] std::string WithParameters(std::string_view url, const std::vector<FeedParameter>& parameters);

// Ed25519. Both are written in base64, with white space anywhere.
using UpdateKey = std::array<std::uint8_t, 32>;
using UpdateSignature = std::array<std::uint8_t, 64>;

[[nodiscard]] std::optional<UpdateKey> UpdateKeyFrom(std::string_view base64) noexcept;
[[nodiscard]] std::optional<UpdateSignature> UpdateSignatureFrom(std::string_view base64) noexcept;

// Whether the owner of the key has signed exactly these bytes. Any thread; takes about two milliseconds a megabyte.
[[nodiscard]] bool IsSigned(std::span<const char> file, const UpdateSignature& signature,
                            const UpdateKey& key) noexcept;

}  // namespace tessaro::platform
