#include "Platform/Linux/Tray/MenuService.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

namespace tessaro::platform {

namespace {

constexpr char kInterface[] = "com.canonical.dbusmenu";
constexpr std::uint32_t kVersion = 3;

using Names = std::vector<std::string>;
using Properties = std::map<std::string, sdbus::Variant>;
using Row = sdbus::Struct<std::int32_t, Properties>;
using Layout = sdbus::Struct<std::int32_t, Properties, std::vector<sdbus::Variant>>;
using RemovedProperties = sdbus::Struct<std::int32_t, Names>;
using MenuEvent = sdbus::Struct<std::int32_t, std::string, sdbus::Variant, std::uint32_t>;

// Trays read an underscore as the mark of an access key.
std::string Escaped(const std::string& label) {
  std::string escaped;
  escaped.reserve(label.size());
  for (const char character : label) escaped.append(character == '_' ? 2 : 1, character);
  return escaped;
}

// All that differ from the protocol's defaults; of those the named ones, if there are names.
Properties PropertiesOf(const MenuEntry& entry, const Names& names = {}) {
  Properties properties;
  const auto add = [&](const char* name, auto value) {
    const bool isWanted = names.empty() || std::find(names.begin(), names.end(), name) != names.end();
    if (isWanted) properties.emplace(name, sdbus::Variant(std::move(value)));
  };
  if (entry.isSeparator) {
    add("type", std::string("separator"));
    return properties;
  }
  if (!entry.label.empty()) add("label", Escaped(entry.label));
  if (!entry.isEnabled) add("enabled", false);
  if (entry.isChecked) {
    add("toggle-type", std::string("checkmark"));
    add("toggle-state", std::int32_t{1});
  }
  if (entry.icon) add("icon-data", *entry.icon);
  // The protocol has no tool tips; assistive techniques read this instead of the label.
  if (!entry.toolTip.empty()) add("accessible-desc", entry.label + ", " + entry.toolTip);
  if (entry.id == 0 || !entry.children.empty()) add("children-display", std::string("submenu"));
  return properties;
}

// All levels for a negative depth.
Layout LayoutOf(const MenuEntry& entry, std::int32_t depth, const Names& names) {
  std::vector<sdbus::Variant> children;
  if (depth != 0) {
    children.reserve(entry.children.size());
    for (const MenuEntry& child : entry.children) children.emplace_back(LayoutOf(child, depth - 1, names));
  }
  return {entry.id, PropertiesOf(entry, names), std::move(children)};
}

Names Missing(const Properties& before, const Properties& now) {
  Names missing;
  for (const auto& [name, value] : before) {
    if (!now.contains(name)) missing.push_back(name);
  }
  return missing;
}

}  // namespace

MenuService::MenuService(sdbus::IConnection& bus, const std::string& path, Source source)
    : source_(std::move(source)), object_(sdbus::createObject(bus, path)) {
  RegisterReading();
  RegisterEvents();
  RegisterSignalsAndProperties();
  object_->finishRegistration();
}

void MenuService::RegisterReading() {
  object_->registerMethod("GetLayout")
      .onInterface(kInterface)
      .implementedAs([this](std::int32_t id, std::int32_t depth, const Names& names) {
        const MenuEntry& entry = Entry(id);
        return std::tuple(model_.revision(), LayoutOf(entry, depth, names));
      });
  object_->registerMethod("GetGroupProperties")
      .onInterface(kInterface)
      .implementedAs([this](const Ids& ids, const Names& names) {
        std::vector<Row> rows;
        for (const std::int32_t id : ids) {
          if (const MenuEntry* entry = model_.Find(id)) rows.emplace_back(id, PropertiesOf(*entry, names));
        }
        return rows;
      });
  object_->registerMethod("GetProperty")
      .onInterface(kInterface)
      .implementedAs([this](std::int32_t id, const std::string& name) {
        const Properties found = PropertiesOf(Entry(id), {name});
        if (found.empty()) throw sdbus::Error(kInterface, "There is no property " + name);
        return found.begin()->second;
      });
}

void MenuService::RegisterEvents() {
  object_->registerMethod("Event")
      .onInterface(kInterface)
      .implementedAs([this](std::int32_t id, const std::string& event, const sdbus::Variant&, std::uint32_t) {
        static_cast<void>(Entry(id));
        Event(id, event);
      });
  object_->registerMethod("EventGroup")
      .onInterface(kInterface)
      .implementedAs([this](const std::vector<MenuEvent>& all) {
        Ids ids;
        for (const MenuEvent& event : all) ids.push_back(std::get<0>(event));
        Ids unknown = UnknownOf(ids);
        for (const MenuEvent& event : all) Event(std::get<0>(event), std::get<1>(event));
        return unknown;
      });
  object_->registerMethod("AboutToShow").onInterface(kInterface).implementedAs([this](std::int32_t id) {
    return AboutToShow(id);
  });
  object_->registerMethod("AboutToShowGroup").onInterface(kInterface).implementedAs([this](const Ids& ids) {
    Ids unknown = UnknownOf(ids);
    Ids changed;
    std::copy_if(ids.begin(), ids.end(), std::back_inserter(changed), [this](auto id) { return AboutToShow(id); });
    return std::tuple(changed, unknown);
  });
}

void MenuService::RegisterSignalsAndProperties() {
  object_->registerSignal("ItemsPropertiesUpdated")
      .onInterface(kInterface)
      .withParameters<std::vector<Row>, std::vector<RemovedProperties>>();
  object_->registerSignal("LayoutUpdated").onInterface(kInterface).withParameters<std::uint32_t, std::int32_t>();
  object_->registerSignal("ItemActivationRequested")
      .onInterface(kInterface)
      .withParameters<std::int32_t, std::uint32_t>();
  object_->registerProperty("Version").onInterface(kInterface).withGetter([] { return kVersion; });
  object_->registerProperty("TextDirection").onInterface(kInterface).withGetter([] { return std::string("ltr"); });
  object_->registerProperty("Status").onInterface(kInterface).withGetter([] { return std::string("normal"); });
  object_->registerProperty("IconThemePath").onInterface(kInterface).withGetter([] { return Names(); });
}

void MenuService::Refresh() {
  if (model_.revision() != 0) Rebuild();
}

bool MenuService::AboutToShow(std::int32_t id) { return id == model_.root().id && Rebuild(); }

void MenuService::Event(std::int32_t id, const std::string& event) {
  const MenuEntry* entry = model_.Find(id);
  if (entry == nullptr || entry == &model_.root() || event != "clicked") return;
  if (!entry->isSeparator && entry->isEnabled) source_.choose(*entry);
}

MenuService::Ids MenuService::UnknownOf(const Ids& ids) const {
  Ids unknown;
  std::copy_if(ids.begin(), ids.end(), std::back_inserter(unknown),
               [this](auto id) { return model_.Find(id) == nullptr; });
  return unknown;
}

const MenuEntry& MenuService::Entry(std::int32_t id) {
  // Trays read a menu before the user opens it, and some would never open an empty one.
  if (model_.revision() == 0) Rebuild();
  if (const MenuEntry* entry = model_.Find(id)) return *entry;
  throw sdbus::Error(kInterface, "There is no row " + std::to_string(id));
}

bool MenuService::Rebuild() {
  const MenuModel::Changes changes = model_.Replace(source_.build());
  Announce(changes);
  return changes.layout;
}

void MenuService::Announce(const MenuModel::Changes& changes) {
  if (changes.layout) {
    object_->emitSignal("LayoutUpdated").onInterface(kInterface).withArguments(model_.revision(), model_.root().id);
    return;
  }
  if (changes.rows.empty()) return;
  std::vector<Row> updated;
  std::vector<RemovedProperties> removed;
  for (const auto& [before, now] : changes.rows) {
    updated.emplace_back(now->id, PropertiesOf(*now));
    Names missing = Missing(PropertiesOf(before), PropertiesOf(*now));
    if (!missing.empty()) removed.emplace_back(now->id, std::move(missing));
  }
  object_->emitSignal("ItemsPropertiesUpdated").onInterface(kInterface).withArguments(updated, removed);
}

}  // namespace tessaro::platform
