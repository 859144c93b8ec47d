#pragma once

#import <Foundation/Foundation.h>

// Parts of the menus' probe that work on the general pasteboard.

// Data as base64 by type.
void PutTypesOnPasteboard(NSDictionary* types);

[[nodiscard]] id pasteboardTypes(id);
[[nodiscard]] id largeValueSurvives(id description);
[[nodiscard]] id putURLs(id lists);
[[nodiscard]] id typesOnPasteboard(id);

// A picture and HTML that are provided only when somebody wants them, and how often that was.
[[nodiscard]] id offerLazily(id);
[[nodiscard]] id timesProvided(id);
