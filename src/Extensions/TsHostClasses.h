#pragma once

#import <objc/objc.h>

#include <cstdint>

// The host's own classes that the module extends or looks for.
enum class TsHostClassName : std::uint8_t { Window, WindowDelegate, InspectableWebContentsView };

// The class under the oldest of the names that hosts have had for it; Nil where the host has none of them.
[[nodiscard]] Class TsHostClass(TsHostClassName name);
