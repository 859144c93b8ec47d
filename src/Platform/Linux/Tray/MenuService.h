#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tessaro::platform {

// A row of a menu that another process shows. Texts are UTF-8.
struct MenuEntry {
  std::string identity;   // rows of the same identity in consecutive menus are the same row
  std::size_t place = 0;  // whatever its maker knows it by
  bool isSeparator = false;
  bool isChecked = false;
  bool isEnabled = true;
  std::string label;
  std::string toolTip;
  std::shared_ptr<const std::vector<std::uint8_t>> icon;  // PNG
  std::vector<MenuEntry> children;

  std::int32_t id = 0;  // given by the menu's model; the menu itself is 0
};

// A menu as its readers see it: rows keep their ids from one build to the next, and each build says what has changed.
class MenuModel {
 public:
  struct Changes {
    bool layout = false;  // rows have come, gone or moved: readers must read the menu again
    // Otherwise: the rows that differ, as they were and as they are.
    std::vector<std::pair<MenuEntry, const MenuEntry*>> rows;
  };

  // Gives ids to `rows`; the ids of rows that are gone are not given again.
  Changes Replace(std::vector<MenuEntry> rows);

  // nullptr for an unknown id.
  [[nodiscard]] const MenuEntry* Find(std::int32_t id);

  [[nodiscard]] const MenuEntry& root() const { return root_; }
  // Grows with each change of the layout. 0 is a menu that has never been filled.
  [[nodiscard]] std::uint32_t revision() const { return revision_; }

 private:
  void Number(std::vector<MenuEntry>& rows, const std::vector<MenuEntry>& before);
  void Index(const MenuEntry& entry);

  MenuEntry root_;
  std::uint32_t revision_ = 0;
  std::int32_t lastId_ = 0;
  // Empty until a row is looked for: most builds of a menu are only shown.
  std::unordered_map<std::int32_t, const MenuEntry*> index_;
};

// A menu on the session bus (com.canonical.dbusmenu), as trays and launchers show it. It is built when it is about to
// open, and a menu that is open changes in place.
//
// Main thread only; nothing throws. It lives with its connection.
class MenuService {
 public:
  struct Source {
    // Builds the menu.
    std::function<std::vector<MenuEntry>()> build;
    // The user has chosen an enabled row of the latest build.
    std::function<void(const MenuEntry&)> choose;
  };

  // Raises sdbus::Error. `source` must not destroy the service while it is called.
  MenuService(sdbus::IConnection& bus, const std::string& path, Source source);

  // Builds the menu again, if it has been read, and announces the changes.
  void Refresh();

 private:
  using Ids = std::vector<std::int32_t>;

  void RegisterReading();
  void RegisterEvents();
  void RegisterSignalsAndProperties();
  void GetLayout(sdbus::MethodCall& call, sdbus::MethodReply& reply);
  void GetGroupProperties(sdbus::MethodCall& call, sdbus::MethodReply& reply);
  void GetProperty(sdbus::MethodCall& call, sdbus::MethodReply& reply);
  bool AboutToShow(std::int32_t id);
  void Event(std::int32_t id, const std::string& event);
  [[nodiscard]] Ids UnknownOf(const Ids& ids);
  [[nodiscard]] const MenuEntry& Entry(std::int32_t id);
  // Whether the layout has changed.
  bool Rebuild();
  void Announce(const MenuModel::Changes& changes);

  Source source_;
  MenuModel model_;
  std::unique_ptr<sdbus::IObject> object_;
};

}  // namespace tessaro::platform
