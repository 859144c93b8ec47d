#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Result.h"
#include "Platform/Common/Appcast.h"
#include "Platform/Common/UpdateSource.h"
#include "Platform/Updater.h"

namespace tessaro::platform {

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
