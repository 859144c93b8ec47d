#include "Platform/Common/UpdateDecision.h"

#include <charconv>
#include <compare>
#include <utility>

#include "Platform/Common/Appcast.h"
#include "Platform/Common/VersionOrder.h"

namespace tessaro::platform {

namespace {

// The channel of items that name none.
constexpr std::string_view kDefaultChannel = "stable";

// Some feeds say 0 for an unknown length.
std::optional<std::uint64_t> LengthFrom(std::string_view text) {
  std::uint64_t length = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
  const bool isNumber = error == std::errc() && end == text.data() + text.size();
  return isNumber && length > 0 ? std::optional(length) : std::nullopt;
}

std::string_view OfEnclosure(const AppcastItem& item, std::string_view name) {
  const AppcastProperty* enclosure = FindProperty(item.properties, "enclosure");
  return enclosure != nullptr ? TextOfProperty(enclosure->parts, name) : std::string_view();
}

UpdateFile FileOf(const AppcastItem& item) {
  const auto signature = UpdateSignatureFrom(OfEnclosure(item, "sparkle:edSignature"));
  return {std::string(OfEnclosure(item, "url")), LengthFrom(OfEnclosure(item, "length")),
          signature.value_or(UpdateSignature())};
}

bool IsInChannel(const AppcastItem& item, std::string_view channel) {
  const std::string_view its = TextOfProperty(item.properties, "sparkle:channel");
  return its.empty() || its == kDefaultChannel || its == channel;
}

// A system without a version is too old for items that require one.
std::optional<Unsuitable> JudgeSystem(const AppcastItem& item, const UpdateSettings& settings) {
  const std::string_view version = settings.systemVersion;
  const std::string_view system = OfEnclosure(item, "sparkle:os");
  if (!system.empty() && system != settings.preferences.system) return Unsuitable::OtherSystem;
  const std::string_view least = TextOfProperty(item.properties, "sparkle:minimumSystemVersion");
  if (!least.empty() && std::is_lt(CompareVersions(version, least))) return Unsuitable::SystemTooOld;
  const std::string_view most = TextOfProperty(item.properties, "sparkle:maximumSystemVersion");
  if (!most.empty() && std::is_gt(CompareVersions(version, most))) return Unsuitable::SystemTooNew;
  return std::nullopt;
}

std::optional<Unsuitable> JudgeFile(const AppcastItem& item) {
  if (!IsTrustworthyAddress(OfEnclosure(item, "url"))) return Unsuitable::NoFile;
  if (!UpdateSignatureFrom(OfEnclosure(item, "sparkle:edSignature"))) return Unsuitable::NotSigned;
  return std::nullopt;
}

std::optional<Unsuitable> Judge(const AppcastItem& item, const UpdateSettings& settings) {
  if (item.version.empty()) return Unsuitable::NoVersion;
  if (std::is_lteq(CompareVersions(item.version, settings.currentVersion))) return Unsuitable::NotNewer;
  if (item.version == settings.skippedVersion) return Unsuitable::Skipped;
  if (const auto reason = JudgeSystem(item, settings)) return reason;
  if (!IsInChannel(item, settings.channel)) return Unsuitable::OtherChannel;
  return JudgeFile(item);
}

}  // namespace

Result<UpdateDecision> DecideUpdate(std::string_view feed, const UpdateSettings& settings) noexcept {
  auto items = ReadAppcast(feed, settings.preferences);
  if (!items) return tl::unexpected(std::move(items.error()));
  UpdateDecision decision{std::move(*items), {}, std::nullopt, {}};
  for (std::size_t i = 0; i < decision.items.size(); ++i) {
    const auto judgement = decision.judgements.emplace_back(Judge(decision.items[i], settings));
    if (judgement) continue;
    const bool isNewest = !decision.update || std::is_gt(CompareVersions(decision.items[i].version,
                                                                         decision.items[*decision.update].version));
    if (isNewest) decision.update = i;
  }
  if (decision.update) decision.file = FileOf(decision.items[*decision.update]);
  return decision;
}

}  // namespace tessaro::platform
