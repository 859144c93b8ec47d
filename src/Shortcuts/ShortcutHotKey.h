#pragma once

#include "Platform/HotKeys.h"

@class MASShortcut, NSString;

// The shortcut as a system-wide hot key.
[[nodiscard]] tessaro::platform::HotKey ToHotKey(MASShortcut* shortcut);

// Why a shortcut in this state does not work, in a sentence; nil when it works.
[[nodiscard]] NSString* WhyInactive(MASShortcut* shortcut, tessaro::platform::HotKeyStatus status);
