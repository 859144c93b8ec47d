#pragma once

#import <AppKit/NSPasteboard.h>

// A snapshot of a pasteboard's contents. There is one in the process, from a successful save to the next successful
// restore. Main thread only.

// Copies every item with the data of all its types, in their order. False, without effect, while a snapshot is held.
[[nodiscard]] bool TsSavePasteboard(NSPasteboard* pasteboard);

// Replaces the pasteboard's contents by the snapshot. False without a snapshot.
[[nodiscard]] bool TsRestorePasteboard(NSPasteboard* pasteboard);

// Replaces the pasteboard's contents by a PNG, JPEG or GIF file. Files of other kinds are refused, without effect.
[[nodiscard]] bool TsWriteFileContents(NSPasteboard* pasteboard, NSString* path);

// The strings that the pasteboard's items have for a type.
[[nodiscard]] NSArray* TsStringsOfPasteboardType(NSPasteboard* pasteboard, NSString* type);

// The text that the user last searched for, in any application; nil for none.
[[nodiscard]] NSString* TsGetFindStringFromPasteboard();
void TsSetFindStringToPasteboard(NSString* string);

// Puts URLs with titles on a pasteboard, in every form that browsers and file managers read. Titles may be nil.
@interface NSPasteboard (TsURL)

// Declares `types`, which may be nil, followed by the types of URLs. `provider` provides the data of `types` on
// request.
- (void)ts_declareURLPasteboardWithAdditionalTypes:(NSArray*)types owner:(id)provider;

- (void)ts_setURL:(NSString*)url withTitle:(NSString*)title;
- (void)ts_setURLs:(NSArray*)urls withTitles:(NSArray*)titles;

@end
