#pragma once

#include "Platform/HotKeys.h"

@class MASShortcut, NSString;

// A shortcut as one that is heard in every application.
[[nodiscard]] tessaro::platform::HotKey ToHotKey(MASShortcut* shortcut);

// Says in a sentence why a shortcut in this state is not heard; nil when it is.
[[nodiscard]] NSString* WhyUnheard(MASShortcut* shortcut, tessaro::platform::HotKeyStatus status);
