#include "Platform/Linux/Tray/MenuService.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

namespace tessaro::platform {

// ---- The model

namespace {

bool HaveSameLayout(const std::vector<MenuEntry>& left, const std::vector<MenuEntry>& right) {
  if (left.size() != right.size()) return false;
  for (std::size_t i = 0; i < left.size(); ++i) {
    if (left[i].id != right[i].id || !HaveSameLayout(left[i].children, right[i].children)) return false;
  }
  return true;
}

bool HaveSameIcon(const MenuEntry& left, const MenuEntry& right) {
  if (left.icon == right.icon) return true;
  return left.icon && right.icon && *left.icon == *right.icon;
}

bool LookTheSame(const MenuEntry& left, const MenuEntry& right) {
  return left.isSeparator == right.isSeparator && left.isChecked == right.isChecked &&
         left.isEnabled == right.isEnabled && left.label == right.label && left.toolTip == right.toolTip &&
         HaveSameIcon(left, right);
}

// Both have the same layout.
void CollectChanges(std::vector<MenuEntry>& before, const std::vector<MenuEntry>& now, MenuModel::Changes& changes) {
  for (std::size_t i = 0; i < now.size(); ++i) {
    CollectChanges(before[i].children, now[i].children, changes);
    if (!LookTheSame(before[i], now[i])) changes.rows.emplace_back(std::move(before[i]), &now[i]);
  }
}

}  // namespace

MenuModel::Changes MenuModel::Replace(std::vector<MenuEntry> rows) {
  Number(rows, root_.children);
  std::swap(root_.children, rows);
  index_.clear();

  Changes changes;
  changes.layout = revision_ == 0 || !HaveSameLayout(rows, root_.children);
  if (changes.layout) {
    ++revision_;
  } else {
    CollectChanges(rows, root_.children, changes);
  }
  return changes;
}

const MenuEntry* MenuModel::Find(std::int32_t id) {
  if (id == root_.id) return &root_;
  if (index_.empty()) Index(root_);
  const auto found = index_.find(id);
  return found == index_.end() ? nullptr : found->second;
}

void MenuModel::Number(std::vector<MenuEntry>& rows, const std::vector<MenuEntry>& before) {
  // Rows of one identity, as separators, keep their ids in their order: the first is the last here.
  std::unordered_map<std::string_view, std::vector<const MenuEntry*>> known;
  for (auto row = before.rbegin(); row != before.rend(); ++row) known[row->identity].push_back(&*row);
  const MenuEntry none;
  for (MenuEntry& row : rows) {
    auto& same = known[row.identity];
    const MenuEntry& earlier = same.empty() ? none : *same.back();
    row.id = same.empty() ? ++lastId_ : earlier.id;
    if (!same.empty()) same.pop_back();
    Number(row.children, earlier.children);
  }
}

void MenuModel::Index(const MenuEntry& entry) {
  index_.emplace(entry.id, &entry);
  for (const MenuEntry& child : entry.children) Index(child);
}

// ---- On the bus

namespace {

constexpr char kInterface[] = "com.canonical.dbusmenu";
constexpr std::uint32_t kVersion = 3;
constexpr char kClicked[] = "clicked";

using Ids = std::vector<std::int32_t>;
using Names = std::vector<std::string>;
using MenuEvent = sdbus::Struct<std::int32_t, std::string, sdbus::Variant, std::uint32_t>;

// Trays read an underscore as the mark of an access key.
std::string Escaped(const std::string& label) {
  std::string escaped;
  escaped.reserve(label.size());
  for (const char character : label) escaped.append(character == '_' ? 2 : 1, character);
  return escaped;
}

// Calls visit(name, value) for each property that differs from the protocol's default.
template <typename Visit>
void VisitProperties(const MenuEntry& entry, Visit visit) {
  if (entry.isSeparator) return visit("type", std::string("separator"));
  if (!entry.label.empty()) visit("label", Escaped(entry.label));
  if (!entry.isEnabled) visit("enabled", false);
  if (entry.isChecked) {
    visit("toggle-type", std::string("checkmark"));
    visit("toggle-state", std::int32_t{1});
  }
  if (entry.icon) visit("icon-data", *entry.icon);
  // The protocol has no tool tips; assistive techniques read this instead of the label.
  if (!entry.toolTip.empty()) visit("accessible-desc", entry.label + ", " + entry.toolTip);
  if (entry.id == 0 || !entry.children.empty()) visit("children-display", std::string("submenu"));
}

Names PropertyNames(const MenuEntry& entry) {
  Names names;
  VisitProperties(entry, [&names](const char* name, const auto&) { names.emplace_back(name); });
  return names;
}

// ---- Writing: directly into the message, which is several times as fast as nested sdbus::Variant values.

template <typename Value>
void WriteVariant(sdbus::Message& message, const Value& value) {
  message.openVariant(sdbus::signature_of<Value>::str());
  message << value;
  message.closeVariant();
}

// An id and its properties; of those the named ones, if there are names.
void WriteProperties(sdbus::Message& message, const MenuEntry& entry, const Names& names) {
  message << entry.id;
  message.openContainer("{sv}");
  VisitProperties(entry, [&](const char* name, const auto& value) {
    if (!names.empty() && std::ranges::find(names, name) == names.end()) return;
    message.openDictEntry("sv");
    message << name;
    WriteVariant(message, value);
    message.closeDictEntry();
  });
  message.closeContainer();
}

void WriteRow(sdbus::Message& message, const MenuEntry& entry, const Names& names) {
  message.openStruct("ia{sv}");
  WriteProperties(message, entry, names);
  message.closeStruct();
}

// All levels for a negative depth.
void WriteLayout(sdbus::Message& message, const MenuEntry& entry, std::int32_t depth, const Names& names) {
  message.openStruct("ia{sv}av");
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

// Naming a row a million times must not cost a million times its work.
Ids WithoutRepeats(const Ids& ids) {
  Ids unique;
  std::set<std::int32_t> seen;
  std::copy_if(ids.begin(), ids.end(), std::back_inserter(unique), [&](auto id) { return seen.insert(id).second; });
  return unique;
}

void WriteMissing(sdbus::Message& message, std::int32_t id, const Names& before, const Names& now) {
  Names missing;
  std::ranges::copy_if(before, std::back_inserter(missing),
                       [&now](const auto& name) { return std::ranges::find(now, name) == now.end(); });
  if (missing.empty()) return;
  message.openStruct("ias");
  message << id << missing;
  message.closeStruct();
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
  const auto add = [this](const char* name, const char* takes, const char* returns, auto method) {
    object_->registerMethod(kInterface, name, takes, returns, [this, method](sdbus::MethodCall call) {
      sdbus::MethodReply reply = call.createReply();
      (this->*method)(call, reply);
      reply.send();
    });
  };
  add("GetLayout", "iias", "u(ia{sv}av)", &MenuService::GetLayout);
  add("GetGroupProperties", "aias", "a(ia{sv})", &MenuService::GetGroupProperties);
  add("GetProperty", "is", "v", &MenuService::GetProperty);
}

void MenuService::GetLayout(sdbus::MethodCall& call, sdbus::MethodReply& reply) {
  std::int32_t id = 0;
  std::int32_t depth = 0;
  Names names;
  call >> id >> depth >> names;
  const MenuEntry& entry = Entry(id);
  reply << model_.revision();
  WriteLayout(reply, entry, depth, names);
}

void MenuService::GetGroupProperties(sdbus::MethodCall& call, sdbus::MethodReply& reply) {
  Ids ids;
  Names names;
  call >> ids >> names;
  reply.openContainer("(ia{sv})");
  for (const std::int32_t id : WithoutRepeats(ids)) {
    if (const MenuEntry* entry = model_.Find(id)) WriteRow(reply, *entry, names);
  }
  reply.closeContainer();
}

void MenuService::GetProperty(sdbus::MethodCall& call, sdbus::MethodReply& reply) {
  std::int32_t id = 0;
  std::string wanted;
  call >> id >> wanted;
  bool isThere = false;
  VisitProperties(Entry(id), [&](const char* name, const auto& value) {
    if (name != wanted) return;
    WriteVariant(reply, value);
    isThere = true;
  });
  if (!isThere) throw sdbus::Error(kInterface, "There is no property " + wanted);
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
        Ids clicked;
        for (const MenuEvent& event : all) {
          ids.push_back(event.get<0>());
          if (event.get<1>() == kClicked) clicked.push_back(event.get<0>());
        }
        Ids unknown = UnknownOf(ids);
        for (const std::int32_t id : WithoutRepeats(clicked)) Event(id, kClicked);
        return unknown;
      });
  object_->registerMethod("AboutToShow").onInterface(kInterface).implementedAs([this](std::int32_t id) {
    return AboutToShow(id);
  });
  object_->registerMethod("AboutToShowGroup").onInterface(kInterface).implementedAs([this](const Ids& ids) {
    Ids unknown = UnknownOf(ids);
    Ids changed;
    std::ranges::copy_if(WithoutRepeats(ids), std::back_inserter(changed), [this](auto id) { return AboutToShow(id); });
    return std::tuple(changed, unknown);
  });
}

void MenuService::RegisterSignalsAndProperties() {
  object_->registerSignal(kInterface, "ItemsPropertiesUpdated", "a(ia{sv})a(ias)");
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
  if (entry == nullptr || entry == &model_.root() || event != kClicked) return;
  if (!entry->isSeparator && entry->isEnabled) source_.choose(*entry);
}

MenuService::Ids MenuService::UnknownOf(const Ids& ids) {
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
  sdbus::Signal signal = object_->createSignal(kInterface, "ItemsPropertiesUpdated");
  signal.openContainer("(ia{sv})");
  for (const auto& [before, now] : changes.rows) WriteRow(signal, *now, {});
  signal.closeContainer();
  signal.openContainer("(ias)");
  for (const auto& [before, now] : changes.rows)
    WriteMissing(signal, now->id, PropertyNames(before), PropertyNames(*now));
  signal.closeContainer();
  object_->emitSignal(signal);
}

}  // namespace tessaro::platform
