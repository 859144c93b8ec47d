#pragma once

#import <AppKit/NSPasteboard.h>

// Puts URLs with titles on a pasteboard, in every form that browsers and file managers read. Titles may be nil.
@interface NSPasteboard (TsURL)

// Declares `types`, which may be nil, followed by the types of URLs. `provider` provides the data of `types` on
// request.
- (void)ts_declareURLPasteboardWithAdditionalTypes:(NSArray*)types owner:(id)provider;

- (void)ts_setURL:(NSString*)url withTitle:(NSString*)title;
- (void)ts_setURLs:(NSArray*)urls withTitles:(NSArray*)titles;

@end
