#include "Platform/Common/Appcast.h"

#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <pugixml.hpp>
#include <utility>

#include "Base/TextPieces.h"

namespace tessaro::platform {

namespace {

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

}  // namespace

Result<std::vector<AppcastItem>> ReadAppcast(std::string_view text, const AppcastPreferences& preferences) noexcept {
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

const AppcastProperty* FindProperty(const std::vector<AppcastProperty>& properties, std::string_view name) noexcept {
  const auto found =
      std::find_if(properties.begin(), properties.end(), [&](const auto& each) { return each.name == name; });
  return found != properties.end() ? &*found : nullptr;
}

std::string_view TextOfProperty(const std::vector<AppcastProperty>& properties, std::string_view name) noexcept {
  const AppcastProperty* property = FindProperty(properties, name);
  return property != nullptr ? std::string_view(property->text) : std::string_view();
}

}  // namespace tessaro::platform
