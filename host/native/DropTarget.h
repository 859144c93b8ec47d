#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

struct ReceivedDrop {
  std::vector<std::string> offered;             // the types, in the source's order
  std::map<std::string, std::string> contents;  // of the wanted ones among them
};

// Shows a window with a title at (x, y) of the screen, as another program's, and waits for something to be dropped on
// it; nothing when that takes longer than a minute, or there is no display. One that is not `willing` refuses all drags
// and answers with what has been dragged over it when the drag leaves.
[[nodiscard]] std::optional<ReceivedDrop> ReceiveDrop(const std::string& title, int x, int y, bool isWilling,
                                                      const std::vector<std::string>& wanted);
