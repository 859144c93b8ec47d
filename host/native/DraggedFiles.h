#pragma once

#include <string>
#include <vector>

// The local files that another application is dragging over a window of ours: absolute paths in its order. Empty when
// it drags something else or doesn't answer within half a second.
[[nodiscard]] std::vector<std::string> FetchDraggedFiles();

// The paths of those lines of a text/uri-list that name files of this machine.
[[nodiscard]] std::vector<std::string> LocalPathsOfURIList(const std::string& list);
