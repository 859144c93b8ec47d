#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Common/UpdateSignature.h"
#include "Platform/Updater.h"

namespace tessaro::platform {

// What an update has to suit.
struct UpdateSettings {
  std::string currentVersion;
  std::string systemVersion;
  std::string channel;
};

// Why an item of the feed is no update; the first reason counts.
enum class Unsuitable { NoVersion, NotNewer, OtherSystem, SystemTooOld, SystemTooNew, OtherChannel, NoFile, NotSigned };

struct UpdateFile {
  std::string url;
  std::optional<std::uint64_t> length;  // in bytes, where the feed tells
  UpdateSignature signature{};
};

struct UpdateDecision {
  std::vector<AppcastItem> items;
  std::vector<std::optional<Unsuitable>> judgements;  // one an item; nothing for those that are suitable
  std::optional<std::size_t> update;                  // the newest suitable item, the first of several
  UpdateFile file;                                    // where there is an update
};

// Chooses an update from a feed, which may be any text. It is newer than the current version, for this system and
// channel, and names its file's address and signature, which remain to be verified. Nothing, with the reason, when the
// text is no feed. Depends on nothing but its arguments.
[[nodiscard]] std::optional<UpdateDecision> DecideUpdate(std::string_view feed, const UpdateSettings& settings,
                                                         std::string& reason) noexcept;

}  // namespace tessaro::platform
