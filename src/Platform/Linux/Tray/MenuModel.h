#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Platform/Linux/Tray/MenuEntry.h"

namespace tessaro::platform {

// A menu as others see it: rows keep their numbers from one build to the next, and it is known what has changed.
class MenuModel {
 public:
  struct Changes {
    bool layout = false;  // rows have come, gone or moved; who looks at the menu must read it anew
    // Otherwise: the rows that differ, as they were and as they are.
    std::vector<std::pair<MenuEntry, const MenuEntry*>> rows;
  };

  // Numbers are given to `rows`; those of rows that are gone are not given again.
  Changes Replace(std::vector<MenuEntry> rows);

  // What has that number; nullptr for none.
  [[nodiscard]] const MenuEntry* Find(std::int32_t id) const;

  [[nodiscard]] const MenuEntry& root() const { return root_; }
  // Grows with each change of the layout. 0 is a menu that has never been filled.
  [[nodiscard]] std::uint32_t revision() const { return revision_; }

 private:
  using Numbers = std::unordered_map<std::string, std::int32_t>;

  void Number(std::vector<MenuEntry>& rows, const std::string& parent, Numbers& numbers);
  void Index(const MenuEntry& entry);

  MenuEntry root_;
  std::uint32_t revision_ = 0;
  std::int32_t lastId_ = 0;
  Numbers numbers_;
  std::unordered_map<std::int32_t, const MenuEntry*> index_;
};

}  // namespace tessaro::platform
