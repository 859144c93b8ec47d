#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Result.h"
#include "Platform/Updater.h"

namespace tessaro::platform {

// The order of versions as the field has it. Runs of digits and runs of letters are compared one after the other,
// numbers by their value and words by their letters; a number is newer than a word. Of versions that are equal as far
// as both go the longer one is newer, unless it goes on with a word: 1.0b2 < 1.0 < 1.0.1 < 1.1.
[[nodiscard]] std::weak_ordering CompareVersions(std::string_view left, std::string_view right) noexcept;

// Whether feeds and files may come from this address: over TLS, or from this very machine.
[[nodiscard]] bool IsTrustworthyAddress(std::string_view url) noexcept;

// The address with the parameters appended to its query, in order.
[[nodiscard]] std::string WithParameters(std::string_view url, const std::vector<FeedParameter>& parameters);

// Ed25519. Both are written in base64, with white space anywhere.
using UpdateKey = std::array<std::uint8_t, 32>;
using UpdateSignature = std::array<std::uint8_t, 64>;

[[nodiscard]] std::optional<UpdateKey> UpdateKeyFrom(std::string_view base64) noexcept;

// Whether the owner of the key has signed exactly these bytes. Any thread; takes about two milliseconds a megabyte.
[[nodiscard]] bool IsSigned(std::span<const char> file, const UpdateSignature& signature,
                            const UpdateKey& key) noexcept;

// Which of several elements with the same name counts: enclosures for this system (as "sparkle:os" names it), texts in
// the first of these languages. Otherwise the first one that names no system or language.
struct AppcastPreferences {
  std::string system;
  std::vector<std::string> languages;
};

// The installation that an update has to suit.
struct UpdateSettings {
  std::string currentVersion;
  std::string systemVersion;
  std::string channel;
  AppcastPreferences preferences;
  std::string skippedVersion;  // by the user; empty for none
};

// Why an item of the feed is no update; the first reason counts.
enum class Unsuitable {
  NoVersion,
  NotNewer,
  Skipped,
  OtherSystem,
  SystemTooOld,
  SystemTooNew,
  OtherChannel,
  NoFile,
  NotSigned,
};

struct UpdateFile {
  std::string url;
  std::optional<std::uint64_t> length;  // in bytes, if the feed says so
  UpdateSignature signature{};
};

struct UpdateDecision {
  std::vector<AppcastItem> items;
  std::vector<std::optional<Unsuitable>> judgements;  // one an item; nothing for those that are suitable
  std::optional<std::size_t> update;                  // the newest suitable item, the first of several
  UpdateFile file;                                    // where there is an update
};

// Chooses an update from a feed, which may be any text; one that is no feed fails. The update is newer than the current
// version, for this system and channel, and names its file's address and signature, which remain to be verified.
// Depends on nothing but its arguments.
[[nodiscard]] Result<UpdateDecision> DecideUpdate(std::string_view feed, const UpdateSettings& settings) noexcept;

}  // namespace tessaro::platform
