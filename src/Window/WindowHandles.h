#pragma once

@class NSWindow;

// The window of this application that a reference from outside means: the window itself, or that of the view it refers
// to, as hosts hand out either. nil when there is no such window any more.
//
// `reference` is compared with what is alive, never followed: it may be anything. Main thread only.
[[nodiscard]] NSWindow* TsLivingWindow(const void* reference);
