#pragma once

#import <Foundation/Foundation.h>

// Parts of the menus' probe that work on the general pasteboard.

// Data as base64 by type.
void PutTypesOnPasteboard(NSDictionary* types);

[[nodiscard]] id PasteboardTypes(id);
[[nodiscard]] id LargeValueSurvives(id description);
[[nodiscard]] id PutURLs(id lists);
[[nodiscard]] id TypesOnPasteboard(id);

// A picture and HTML that are provided only when somebody wants them, and how often that was.
[[nodiscard]] id OfferLazily(id);
[[nodiscard]] id TimesProvided(id);
