#pragma once

@class NSWindow;

// The window of this application for a handle's reference to a window or a view. nil when the window is gone.
//
// `reference` may be any value: it is compared with living objects, never followed. Main thread only.
[[nodiscard]] NSWindow* TsLivingWindow(const void* reference);
