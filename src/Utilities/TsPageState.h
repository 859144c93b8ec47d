#pragma once

#import <Foundation/NSString.h>

// The page that the application shows: what its scripting properties and the drag of a window's title answer with.
// Main thread only. Each text is nil until it is set, and may be set to nil.

void SetCurrentURL(NSString* url, NSString* webURL, NSString* title);

[[nodiscard]] NSString* GetCurrentURL();
[[nodiscard]] NSString* GetCurrentWebURL();
[[nodiscard]] NSString* GetCurrentTitle();

// Asks script, synchronously, for the text of the message on the page; nil when no current-state callback is set or
// it has none to give.
[[nodiscard]] NSString* GetCurrentMessageText();
