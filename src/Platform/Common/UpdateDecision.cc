#include "Platform/Common/UpdateDecision.h"

#include <sodium.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <pugixml.hpp>
#include <utility>

#include "Base/TextPieces.h"

namespace tessaro::platform {

static_assert(std::tuple_size_v<UpdateKey> == crypto_sign_PUBLICKEYBYTES);
static_assert(std::tuple_size_v<UpdateSignature> == crypto_sign_BYTES);

namespace {

// ---- Versions

bool IsDigit(unsigned char c) { return c >= '0' && c <= '9'; }
// Bytes beyond ASCII are letters of some language.
bool IsLetter(unsigned char c) { return (c | 0x20) >= 'a' && ((c | 0x20) <= 'z' || c >= 0x80); }

// Takes the runs off a version, one at a time.
class Runs {
 public:
  explicit Runs(std::string_view version) : rest_(version) {}

  // Empty at the end.
  std::string_view Next() {
    const auto isSeparator = [](char c) { return !IsDigit(c) && !IsLetter(c); };
    rest_.remove_prefix(std::find_if_not(rest_.begin(), rest_.end(), isSeparator) - rest_.begin());
    const bool isNumber = !rest_.empty() && IsDigit(rest_.front());
    const auto end = std::find_if_not(rest_.begin(), rest_.end(), isNumber ? IsDigit : IsLetter);
    const auto run = rest_.substr(0, end - rest_.begin());
    rest_.remove_prefix(run.size());
    return run;
  }

 private:
  std::string_view rest_;
};

// Version numbers may be longer than any integer.
std::weak_ordering CompareNumbers(std::string_view left, std::string_view right) {
  for (std::string_view* number : {&left, &right}) {
    number->remove_prefix(std::min(number->find_first_not_of('0'), number->size()));
  }
  const auto bySize = left.size() <=> right.size();
  return std::is_neq(bySize) ? bySize : left.compare(right) <=> 0;
}

std::weak_ordering CompareRuns(std::string_view left, std::string_view right) {
  const bool isNumber = IsDigit(left.front());
  if (isNumber != IsDigit(right.front())) return isNumber <=> !isNumber;
  return isNumber ? CompareNumbers(left, right) : left.compare(right) <=> 0;
}

// ---- The feed

constexpr std::string_view kVocabulary = "http://www.andymatuschak.org/xml-namespaces/sparkle";
constexpr std::string_view kDeclaration = "xmlns:";
constexpr std::string_view kUsualPrefix = "sparkle:";
// Real feeds have some hundred.
constexpr std::size_t kMostItems = 10000;
constexpr std::size_t kMostProperties = 100;
constexpr int kDeepest = 4;

// The feed's prefix for the vocabulary, with its colon.
std::string PrefixIn(pugi::xml_node root, pugi::xml_node channel) {
  for (const pugi::xml_node element : {root, channel}) {
    for (const pugi::xml_attribute attribute : element.attributes()) {
      const std::string_view name = attribute.name();
      if (!name.starts_with(kDeclaration) || Trimmed(attribute.value()) != kVocabulary) continue;
      return std::string(name.substr(kDeclaration.size())) + ":";
    }
  }
  return std::string(kUsualPrefix);
}

// A text may be divided into several sections, as one with "]]>" in it has to be.
std::string TextOf(pugi::xml_node element) {
  std::string text;
  for (const pugi::xml_node child : element.children()) {
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) text += child.value();
  }
  return std::string(Trimmed(text));
}

// Languages are the same when one says no more than the other does: "de" and "de-AT".
bool IsSameLanguage(std::string_view left, std::string_view right) {
  const std::size_t length = std::min(left.size(), right.size());
  if (length == 0 || strncasecmp(left.data(), right.data(), length) != 0) return false;
  const std::string_view rest = (left.size() > right.size() ? left : right).substr(length);
  return rest.empty() || rest.front() == '-' || rest.front() == '_';
}

// The text of the first property of that name; empty if missing.
std::string_view TextOfProperty(const std::vector<AppcastProperty>& properties, std::string_view name) {
  const AppcastProperty* property = FindProperty(properties, name);
  return property != nullptr ? std::string_view(property->text) : std::string_view();
}

class Reader {
 public:
  Reader(std::string prefix, const AppcastPreferences& preferences)
      : prefix_(std::move(prefix)), preferences_(preferences) {}

  [[nodiscard]] AppcastItem Item(pugi::xml_node node) const {
    AppcastItem item;
    std::vector<std::size_t> ranks;
    std::size_t left = kMostProperties;
    for (const pugi::xml_node element : node.children()) {
      if (element.type() != pugi::node_element) continue;
      if (left == 0) break;
      const std::string name = Name(element.name());
      const std::size_t rank = Rank(element);
      const AppcastProperty* known = FindProperty(item.properties, name);
      const std::size_t place = known != nullptr ? known - item.properties.data() : item.properties.size();
      if (known == nullptr) {
        item.properties.push_back(Property(element, kDeepest, left));
        ranks.push_back(rank);
      } else if (rank < ranks[place]) {
        item.properties[place] = Property(element, kDeepest, left);
        ranks[place] = rank;
      }
    }
    item.version = Version(item);
    return item;
  }

 private:
  [[nodiscard]] std::string Name(std::string_view name) const {
    if (!name.starts_with(prefix_)) return std::string(name);
    return std::string(kUsualPrefix).append(name.substr(prefix_.size()));
  }

  // The lower, the better.
  [[nodiscard]] std::size_t Rank(pugi::xml_node element) const {
    const std::string_view system = element.attribute((prefix_ + "os").c_str()).value();
    if (!system.empty()) return system == preferences_.system ? 0 : SIZE_MAX;
    const auto& languages = preferences_.languages;
    const std::string_view language = element.attribute("xml:lang").value();
    if (language.empty()) return languages.size() + 1;
    const auto found = std::find_if(languages.begin(), languages.end(),
                                    [&](const std::string& each) { return IsSameLanguage(each, language); });
    return found != languages.end() ? found - languages.begin() + 1 : languages.size() + 2;
  }

  // `left` is how many properties there may still be.
  [[nodiscard]] AppcastProperty Property(pugi::xml_node element, int depth, std::size_t& left) const {
    if (left > 0) --left;
    AppcastProperty property{Name(element.name()), TextOf(element), {}};
    if (!property.text.empty()) return property;
    for (const pugi::xml_attribute attribute : element.attributes()) {
      property.parts.push_back({Name(attribute.name()), attribute.value(), {}});
    }
    if (depth == 0) return property;
    for (const pugi::xml_node child : element.children()) {
      if (left == 0) break;
      if (child.type() == pugi::node_element) property.parts.push_back(Property(child, depth - 1, left));
    }
    return property;
  }

  // The file's own version comes before the item's.
  static std::string Version(const AppcastItem& item) {
    constexpr std::string_view kVersion = "sparkle:version";
    const AppcastProperty* enclosure = FindProperty(item.properties, "enclosure");
    const std::string_view ofFile = enclosure != nullptr ? TextOfProperty(enclosure->parts, kVersion) : "";
    return std::string(Trimmed(ofFile.empty() ? TextOfProperty(item.properties, kVersion) : ofFile));
  }

  const std::string prefix_;
  const AppcastPreferences& preferences_;
};

Result<std::vector<AppcastItem>> ReadAppcast(std::string_view text, const AppcastPreferences& preferences) {
  pugi::xml_document document;
  const pugi::xml_parse_result parsed = document.load_buffer(text.data(), text.size());
  if (!parsed) {
    return Fail("no XML: " + std::string(parsed.description()) + " at byte " + std::to_string(parsed.offset));
  }
  const pugi::xml_node root = document.child("rss");
  const pugi::xml_node channel = root.child("channel");
  if (!channel) return Fail("no channel in an \"rss\" element");
  const Reader reader(PrefixIn(root, channel), preferences);
  std::vector<AppcastItem> items;
  for (const pugi::xml_node node : channel.children("item")) {
    if (items.size() == kMostItems) return Fail("more than " + std::to_string(kMostItems) + " items");
    items.push_back(reader.Item(node));
  }
  return items;
}

// ---- Addresses and keys

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

// ---- The choice

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
  const auto signature = Decode<UpdateSignature>(OfEnclosure(item, "sparkle:edSignature"));
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
  if (!Decode<UpdateSignature>(OfEnclosure(item, "sparkle:edSignature"))) return Unsuitable::NotSigned;
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

const AppcastProperty* FindProperty(const std::vector<AppcastProperty>& properties, std::string_view name) noexcept {
  const auto found =
      std::find_if(properties.begin(), properties.end(), [&](const auto& each) { return each.name == name; });
  return found != properties.end() ? &*found : nullptr;
}

std::weak_ordering CompareVersions(std::string_view left, std::string_view right) noexcept {
  Runs leftRuns(left);
  Runs rightRuns(right);
  for (;;) {
    const auto leftRun = leftRuns.Next();
    const auto rightRun = rightRuns.Next();
    if (leftRun.empty() && rightRun.empty()) return std::weak_ordering::equivalent;
    // A version with a further word precedes the one without: 1.0b before 1.0.
    if (leftRun.empty()) return IsDigit(rightRun.front()) ? std::weak_ordering::less : std::weak_ordering::greater;
    if (rightRun.empty()) return IsDigit(leftRun.front()) ? std::weak_ordering::greater : std::weak_ordering::less;
    const auto order = CompareRuns(leftRun, rightRun);
    if (std::is_neq(order)) return order;
  }
}

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

bool IsSigned(std::span<const char> file, const UpdateSignature& signature, const UpdateKey& key) noexcept {
  // The library chooses its implementation for this processor.
  if (sodium_init() < 0) return false;
  return crypto_sign_verify_detached(signature.data(), reinterpret_cast<const unsigned char*>(file.data()), file.size(),
                                     key.data()) == 0;
}

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
