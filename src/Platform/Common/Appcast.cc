#include "Platform/Common/Appcast.h"

#include <algorithm>
#include <pugixml.hpp>
#include <utility>

namespace tessaro::platform {

namespace {

constexpr std::string_view kVocabulary = "http://www.andymatuschak.org/xml-namespaces/sparkle";
constexpr std::string_view kDeclaration = "xmlns:";
constexpr std::string_view kUsualPrefix = "sparkle:";
constexpr std::string_view kSpace = " \t\r\n";
// Real feeds have some hundred.
constexpr std::size_t kMostItems = 10000;
constexpr std::size_t kMostProperties = 100;

std::string_view Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kSpace);
  return first == std::string_view::npos ? text.substr(0, 0)
                                         : text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

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

class Reader {
 public:
  explicit Reader(std::string prefix) : prefix_(std::move(prefix)) {}

  [[nodiscard]] AppcastItem Item(pugi::xml_node node) const {
    AppcastItem item;
    for (const pugi::xml_node element : node.children()) {
      if (element.type() != pugi::node_element) continue;
      if (item.properties.size() == kMostProperties) break;
      AppcastProperty property = Property(element);
      // The first one counts.
      if (FindProperty(item.properties, property.name) == nullptr) item.properties.push_back(std::move(property));
    }
    item.version = Version(item);
    return item;
  }

 private:
  [[nodiscard]] std::string Name(std::string_view name) const {
    if (!name.starts_with(prefix_)) return std::string(name);
    return std::string(kUsualPrefix).append(name.substr(prefix_.size()));
  }

  [[nodiscard]] AppcastProperty Property(pugi::xml_node element) const {
    AppcastProperty property{Name(element.name()), std::string(Trimmed(element.child_value())), {}};
    if (!property.text.empty()) return property;
    for (const pugi::xml_attribute attribute : element.attributes()) {
      property.attributes.push_back({Name(attribute.name()), attribute.value(), {}});
    }
    return property;
  }

  // The file's own version comes before the item's.
  static std::string Version(const AppcastItem& item) {
    constexpr std::string_view kVersion = "sparkle:version";
    const AppcastProperty* enclosure = FindProperty(item.properties, "enclosure");
    const std::string_view ofFile = enclosure != nullptr ? TextOfProperty(enclosure->attributes, kVersion) : "";
    return std::string(Trimmed(ofFile.empty() ? TextOfProperty(item.properties, kVersion) : ofFile));
  }

  const std::string prefix_;
};

}  // namespace

std::optional<std::vector<AppcastItem>> ReadAppcast(std::string_view text, std::string& reason) noexcept {
  pugi::xml_document document;
  const pugi::xml_parse_result parsed = document.load_buffer(text.data(), text.size());
  if (!parsed) {
    reason = "no XML: " + std::string(parsed.description()) + " at byte " + std::to_string(parsed.offset);
    return std::nullopt;
  }
  const pugi::xml_node root = document.child("rss");
  const pugi::xml_node channel = root.child("channel");
  if (!channel) {
    reason = "no channel in an \"rss\" element";
    return std::nullopt;
  }
  const Reader reader(PrefixIn(root, channel));
  std::vector<AppcastItem> items;
  for (const pugi::xml_node node : channel.children("item")) {
    if (items.size() == kMostItems) {
      reason = "more than " + std::to_string(kMostItems) + " items";
      return std::nullopt;
    }
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
