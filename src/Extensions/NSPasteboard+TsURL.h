#pragma once

#import <AppKit/NSPasteboard.h>

// Puts addresses with titles on a pasteboard, in all the forms that browsers and file managers take. Titles may be nil.
@interface NSPasteboard (TsURL)

// Announces `types`, which may be nil, and the types of addresses behind them. `provider` provides the data of the
// former when somebody asks.
- (void)ts_declareURLPasteboardWithAdditionalTypes:(NSArray*)types owner:(id)provider;

- (void)ts_setURL:(NSString*)url withTitle:(NSString*)title;
- (void)ts_setURLs:(NSArray*)urls withTitles:(NSArray*)titles;

@end
