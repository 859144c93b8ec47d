#include "Platform/Linux/Tray/MenuService.h"

namespace tessaro::platform {

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
  Ids ids;
  Number(rows, "", ids);
  ids_ = std::move(ids);
  std::swap(root_.children, rows);
  index_.clear();
  Index(root_);

  Changes changes;
  changes.layout = revision_ == 0 || !HaveSameLayout(rows, root_.children);
  if (changes.layout) {
    ++revision_;
  } else {
    CollectChanges(rows, root_.children, changes);
  }
  return changes;
}

const MenuEntry* MenuModel::Find(std::int32_t id) const {
  const auto found = index_.find(id);
  return found == index_.end() ? nullptr : found->second;
}

// Rows of one identity, as separators, are numbered in their order.
void MenuModel::Number(std::vector<MenuEntry>& rows, const std::string& parent, Ids& ids) {
  std::unordered_map<std::string, int> seen;
  for (MenuEntry& row : rows) {
    const int before = seen[row.identity]++;
    const std::string name = parent + '/' + row.identity + '#' + std::to_string(before);
    const auto known = ids_.find(name);
    row.id = known == ids_.end() ? ++lastId_ : known->second;
    ids.emplace(name, row.id);
    Number(row.children, name, ids);
  }
}

void MenuModel::Index(const MenuEntry& entry) {
  index_.emplace(entry.id, &entry);
  for (const MenuEntry& child : entry.children) Index(child);
}

}  // namespace tessaro::platform
