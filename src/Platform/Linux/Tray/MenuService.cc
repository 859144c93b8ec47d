#include "Platform/Linux/Tray/MenuService.h"

#include <algorithm>
#include <string_view>
#include <tuple>
#include <utility>

namespace tessaro::platform {

namespace {

constexpr char kInterface[] = "com.canonical.dbusmenu";
constexpr std::uint32_t kVersion = 3;

// Trays take an underscore for the mark of an access key.
std::string Escaped(const std::string& label) {
  std::string escaped;
  escaped.reserve(label.size());
  for (const char character : label) escaped.append(character == '_' ? 2 : 1, character);
  return escaped;
}

// Calls `visit(name, value)` for each property that differs from what the protocol takes for granted.
template <typename Visit>
void VisitProperties(const MenuEntry& entry, const Visit& visit) {
  if (entry.kind == MenuEntry::Kind::Separator) return visit("type", std::string("separator"));
  if (!entry.label.empty()) visit("label", Escaped(entry.label));
  if (!entry.isEnabled) visit("enabled", false);
  if (entry.isChecked) {
    visit("toggle-type", std::string("checkmark"));
    visit("toggle-state", std::int32_t{1});
  }
  if (entry.icon) visit("icon-data", *entry.icon);
  // The protocol has no tool tips; this is what assistive techniques read out instead of the label.
  if (!entry.toolTip.empty()) visit("accessible-desc", entry.label + ", " + entry.toolTip);
  if (entry.id == 0 || !entry.children.empty()) visit("children-display", std::string("submenu"));
}

using Names = std::vector<std::string>;

// No names ask for all properties.
bool IsAsked(const Names& names, std::string_view name) {
  return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
}

// What goes over the bus is written straight into the message: sdbus::Variant would make a message of each value.
template <typename Value>
void WriteVariant(sdbus::Message& message, const Value& value) {
  const std::string signature = sdbus::signature_of<Value>::str();
  message.openVariant(signature);
  message << value;
  message.closeVariant();
}

void WriteProperties(sdbus::Message& message, const MenuEntry& entry, const Names& names) {
  message.openContainer("{sv}");
  VisitProperties(entry, [&](const char* name, const auto& value) {
    if (!IsAsked(names, name)) return;
    message.openDictEntry("sv");
    message << name;
    WriteVariant(message, value);
    message.closeDictEntry();
  });
  message.closeContainer();
}

// All levels for a negative depth.
void WriteLayout(sdbus::Message& message, const MenuEntry& entry, std::int32_t depth, const Names& names) {
  message.openStruct("ia{sv}av");
  message << entry.id;
  WriteProperties(message, entry, names);
  message.openContainer("v");
  if (depth != 0) {
    for (const MenuEntry& child : entry.children) {
      message.openVariant("(ia{sv}av)");
      WriteLayout(message, child, depth - 1, names);
      message.closeVariant();
    }
  }
  message.closeContainer();
  message.closeStruct();
}

Names PropertyNames(const MenuEntry& entry) {
  Names names;
  VisitProperties(entry, [&names](const char* name, const auto&) { names.emplace_back(name); });
  return names;
}

Names Missing(const Names& before, const Names& now) {
  Names missing;
  std::copy_if(before.begin(), before.end(), std::back_inserter(missing),
               [&now](const std::string& name) { return std::find(now.begin(), now.end(), name) == now.end(); });
  return missing;
}

using RemovedProperties = sdbus::Struct<std::int32_t, Names>;
using MenuEvent = sdbus::Struct<std::int32_t, std::string, sdbus::Variant, std::uint32_t>;

}  // namespace

// Results of the methods, which write themselves into the reply.
namespace menu_wire {

struct Layout {
  const MenuEntry* entry;
  std::int32_t depth;
  Names names;
};

struct RowProperties {
  const MenuEntry* entry;
  Names names;
};

struct PropertyValue {
  const MenuEntry* entry;
  std::string name;
};

sdbus::Message& operator<<(sdbus::Message& message, const Layout& layout) {
  WriteLayout(message, *layout.entry, layout.depth, layout.names);
  return message;
}

sdbus::Message& operator<<(sdbus::Message& message, const RowProperties& row) {
  message.openStruct("ia{sv}");
  message << row.entry->id;
  WriteProperties(message, *row.entry, row.names);
  message.closeStruct();
  return message;
}

sdbus::Message& operator<<(sdbus::Message& message, const PropertyValue& property) {
  VisitProperties(*property.entry, [&](const char* name, const auto& value) {
    if (property.name == name) WriteVariant(message, value);
  });
  return message;
}

}  // namespace menu_wire

}  // namespace tessaro::platform

template <>
struct sdbus::signature_of<tessaro::platform::menu_wire::Layout> {
  static constexpr bool is_valid = true;
  static const std::string str() { return "(ia{sv}av)"; }
};

template <>
struct sdbus::signature_of<tessaro::platform::menu_wire::RowProperties> {
  static constexpr bool is_valid = true;
  static const std::string str() { return "(ia{sv})"; }
};

template <>
struct sdbus::signature_of<tessaro::platform::menu_wire::PropertyValue> {
  static constexpr bool is_valid = true;
  static const std::string str() { return "v"; }
};

namespace tessaro::platform {

using menu_wire::Layout;
using menu_wire::PropertyValue;
using menu_wire::RowProperties;

MenuService::MenuService(sdbus::IConnection& bus, const std::string& path, Source source)
    : source_(std::move(source)), object_(sdbus::createObject(bus, path)) {
  Register();
}

void MenuService::Register() {
  using Ids = std::vector<std::int32_t>;

  object_->registerMethod("GetLayout")
      .onInterface(kInterface)
      .implementedAs([this](std::int32_t id, std::int32_t depth, const Names& names) {
        const MenuEntry& entry = Entry(id);
        return std::tuple(model_.revision(), Layout{&entry, depth, names});
      });
  object_->registerMethod("GetGroupProperties")
      .onInterface(kInterface)
      .implementedAs([this](const Ids& ids, const Names& names) {
        std::vector<RowProperties> rows;
        for (const std::int32_t id : ids) {
          if (const MenuEntry* entry = model_.Find(id)) rows.push_back({entry, names});
        }
        return rows;
      });
  object_->registerMethod("GetProperty")
      .onInterface(kInterface)
      .implementedAs([this](std::int32_t id, const std::string& name) {
        const MenuEntry& entry = Entry(id);
        if (!IsAsked(PropertyNames(entry), name)) throw sdbus::Error(kInterface, "There is no property " + name);
        return PropertyValue{&entry, name};
      });
  object_->registerMethod("Event")
      .onInterface(kInterface)
      .implementedAs([this](std::int32_t id, const std::string& event, const sdbus::Variant&, std::uint32_t) {
        static_cast<void>(Entry(id));
        Event(id, event);
      });
  object_->registerMethod("EventGroup")
      .onInterface(kInterface)
      .implementedAs([this](const std::vector<MenuEvent>& all) {
        Ids unknown;
        for (const MenuEvent& event : all) {
          const std::int32_t id = std::get<0>(event);
          if (model_.Find(id) == nullptr) unknown.push_back(id);
          Event(id, std::get<1>(event));
        }
        return unknown;
      });
  object_->registerMethod("AboutToShow").onInterface(kInterface).implementedAs([this](std::int32_t id) {
    return AboutToShow(id);
  });
  object_->registerMethod("AboutToShowGroup").onInterface(kInterface).implementedAs([this](const Ids& ids) {
    Ids changed;
    Ids unknown;
    for (const std::int32_t id : ids) {
      if (model_.Find(id) == nullptr) unknown.push_back(id);
      if (AboutToShow(id)) changed.push_back(id);
    }
    return std::tuple(changed, unknown);
  });
  object_->registerSignal("ItemsPropertiesUpdated")
      .onInterface(kInterface)
      .withParameters<std::vector<RowProperties>, std::vector<RemovedProperties>>();
  object_->registerSignal("LayoutUpdated").onInterface(kInterface).withParameters<std::uint32_t, std::int32_t>();
  object_->registerSignal("ItemActivationRequested")
      .onInterface(kInterface)
      .withParameters<std::int32_t, std::uint32_t>();
  object_->registerProperty("Version").onInterface(kInterface).withGetter([] { return kVersion; });
  object_->registerProperty("TextDirection").onInterface(kInterface).withGetter([] { return std::string("ltr"); });
  object_->registerProperty("Status").onInterface(kInterface).withGetter([] { return std::string("normal"); });
  object_->registerProperty("IconThemePath").onInterface(kInterface).withGetter([] { return Names(); });
  object_->finishRegistration();
}

void MenuService::Refresh() {
  if (model_.revision() != 0) Rebuild();
}

bool MenuService::AboutToShow(std::int32_t id) {
  if (id != model_.root().id) return false;
  return Rebuild();
}

void MenuService::Event(std::int32_t id, const std::string& event) {
  const MenuEntry* entry = model_.Find(id);
  if (entry == nullptr || entry == &model_.root() || event != "clicked") return;
  if (entry->kind == MenuEntry::Kind::Row && entry->isEnabled) source_.choose(*entry);
}

const MenuEntry& MenuService::Entry(std::int32_t id) {
  // Trays read a menu before anybody opens it, and some would never open an empty one.
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
  std::vector<RowProperties> updated;
  std::vector<RemovedProperties> removed;
  for (const auto& [before, now] : changes.rows) {
    updated.push_back({now, {}});
    if (Names missing = Missing(PropertyNames(before), PropertyNames(*now)); !missing.empty()) {
      removed.emplace_back(now->id, std::move(missing));
    }
  }
  object_->emitSignal("ItemsPropertiesUpdated").onInterface(kInterface).withArguments(updated, removed);
}

}  // namespace tessaro::platform
