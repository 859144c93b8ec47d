#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tessaro::platform {

// A row of a menu that another process shows. Texts are UTF-8.
struct MenuEntry {
  enum class Kind : std::uint8_t { Row, Separator };

  std::string identity;   // rows of the same identity in consecutive menus are the same row
  std::size_t place = 0;  // whatever its maker knows it by
  Kind kind = Kind::Row;
  bool isChecked = false;
  bool isEnabled = true;
  std::string label;
  std::string toolTip;
  std::shared_ptr<const std::vector<std::uint8_t>> icon;  // PNG
  std::vector<MenuEntry> children;

  std::int32_t id = 0;  // given by the menu's model; the menu itself is 0
};

}  // namespace tessaro::platform
