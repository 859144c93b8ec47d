#include "Extensions/TsHostClasses.h"

#include <array>
#include <cstddef>

#include <objc/runtime.h>

namespace {

constexpr std::size_t kMostNames = 3;

// By TsHostClassName, the oldest name first.
constexpr std::array<std::array<const char*, kMostNames>, 3> kNames = {{
    {"AtomNSWindow", "ElectronNSWindow"},
    {"AtomNSWindowDelegate", "ElectronNSWindowDelegate"},
    {"BRYInspectableWebContentsView", "AtomInspectableWebContentsView", "ElectronInspectableWebContentsView"},
}};

}  // namespace

Class TsHostClass(TsHostClassName name) {
  for (const char* each : kNames[static_cast<std::size_t>(name)]) {
    Class found = each != nullptr ? objc_getClass(each) : Nil;
    if (found != Nil) return found;
  }
  return Nil;
}
