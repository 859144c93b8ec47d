#include "Platform/Linux/Tray/MenuService.h"

#include <algorithm>
#include <limits>
#include <string_view>

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

// Rows of one identity, as separators, keep their ids in their order.
void MenuModel::Number(std::vector<MenuEntry>& rows, const std::vector<MenuEntry>& before) {
  std::size_t same = 0;  // rows at the front that have not moved, mostly all
  for (; same < std::min(rows.size(), before.size()) && rows[same].identity == before[same].identity; ++same) {
    rows[same].id = before[same].id;
    Number(rows[same].children, before[same].children);
  }
  NumberMoved(std::span(rows).subspan(same), std::span(before).subspan(same));
}

void MenuModel::NumberMoved(std::span<MenuEntry> rows, std::span<const MenuEntry> before) {
  if (rows.empty()) return;
  constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
  // For each identity the first row that has no successor yet, and for each row the next one of its identity.
  std::unordered_map<std::string_view, std::size_t> first(before.size());
  std::vector<std::size_t> next(before.size());
  for (std::size_t i = before.size(); i-- > 0;) {
    next[i] = std::exchange(first.try_emplace(before[i].identity, kNone).first->second, i);
  }
  const MenuEntry none;
  for (MenuEntry& row : rows) {
    const auto found = first.find(row.identity);
    const bool isKnown = found != first.end() && found->second != kNone;
    const MenuEntry& known = isKnown ? before[found->second] : none;
    row.id = isKnown ? known.id : ++lastId_;
    if (isKnown) found->second = next[found->second];
    Number(row.children, known.children);
  }
}

void MenuModel::Index(const MenuEntry& entry) {
  index_.emplace(entry.id, &entry);
  for (const MenuEntry& child : entry.children) Index(child);
}

}  // namespace tessaro::platform
