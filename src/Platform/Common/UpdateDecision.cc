#include "Platform/Common/UpdateDecision.h"

#include <charconv>
#include <compare>
#include <utility>

#include "Platform/Common/Appcast.h"
#include "Platform/Common/UpdateAddress.h"
#include "Platform/Common/VersionOrder.h"

namespace tessaro::platform {

namespace {

constexpr std::string_view kThisSystem = "linux";
// The channel of what names none.
constexpr std::string_view kEverybodysChannel = "stable";

std::optional<std::uint64_t> NumberFrom(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

const std::vector<AppcastProperty>& EnclosureOf(const AppcastItem& item) {
  static const auto& none = *new std::vector<AppcastProperty>();
  const AppcastProperty* enclosure = FindProperty(item.properties, "enclosure");
  return enclosure != nullptr ? enclosure->attributes : none;
}

UpdateFile FileOf(const AppcastItem& item) {
  const auto& enclosure = EnclosureOf(item);
  const auto signature = UpdateSignatureFrom(TextOfProperty(enclosure, "sparkle:edSignature"));
  return {std::string(TextOfProperty(enclosure, "url")), NumberFrom(TextOfProperty(enclosure, "length")),
          signature.value_or(UpdateSignature())};
}

bool IsForThisSystem(const AppcastItem& item) {
  const std::string_view system = TextOfProperty(EnclosureOf(item), "sparkle:os");
  return system.empty() || system == kThisSystem;
}

bool IsInChannel(const AppcastItem& item, std::string_view channel) {
  const std::string_view its = TextOfProperty(item.properties, "sparkle:channel");
  return its.empty() || its == kEverybodysChannel || its == channel;
}

// A system that tells no version is too old for those that want one.
std::optional<Unsuitable> JudgeSystem(const AppcastItem& item, std::string_view version) {
  if (!IsForThisSystem(item)) return Unsuitable::OtherSystem;
  const std::string_view least = TextOfProperty(item.properties, "sparkle:minimumSystemVersion");
  if (!least.empty() && std::is_lt(CompareVersions(version, least))) return Unsuitable::SystemTooOld;
  const std::string_view most = TextOfProperty(item.properties, "sparkle:maximumSystemVersion");
  if (!most.empty() && std::is_gt(CompareVersions(version, most))) return Unsuitable::SystemTooNew;
  return std::nullopt;
}

std::optional<Unsuitable> JudgeFile(const AppcastItem& item) {
  const auto& enclosure = EnclosureOf(item);
  if (!IsTrustworthyAddress(TextOfProperty(enclosure, "url"))) return Unsuitable::NoFile;
  if (!UpdateSignatureFrom(TextOfProperty(enclosure, "sparkle:edSignature"))) return Unsuitable::NotSigned;
  return std::nullopt;
}

std::optional<Unsuitable> Judge(const AppcastItem& item, const UpdateSettings& settings) {
  if (item.version.empty()) return Unsuitable::NoVersion;
  if (std::is_lteq(CompareVersions(item.version, settings.currentVersion))) return Unsuitable::NotNewer;
  if (const auto reason = JudgeSystem(item, settings.systemVersion)) return reason;
  if (!IsInChannel(item, settings.channel)) return Unsuitable::OtherChannel;
  return JudgeFile(item);
}

}  // namespace

std::optional<UpdateDecision> DecideUpdate(std::string_view feed, const UpdateSettings& settings,
                                           std::string& reason) noexcept {
  auto items = ReadAppcast(feed, reason);
  if (!items) return std::nullopt;
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
