#pragma once

#import <objc/objc.h>

// The host's own classes that the module extends or looks for, under the oldest of the names that hosts have had for
// them; Nil where the host has none.
[[nodiscard]] Class TsHostWindow();
[[nodiscard]] Class TsHostWindowDelegate();
[[nodiscard]] Class TsHostInspectableWebContentsView();
