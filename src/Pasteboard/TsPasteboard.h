#pragma once

#import <AppKit/NSPasteboard.h>

// What a pasteboard held can be put aside and put back. There is one such snapshot in the process; it lives from a
// successful save to the next successful restore. Main thread only.

// Keeps a copy of every item with the data of all its types, in their order. False when a snapshot is held already,
// which is kept.
[[nodiscard]] bool TsSavePasteboard(NSPasteboard* pasteboard);

// Replaces what the pasteboard holds by the snapshot. False when there is none.
[[nodiscard]] bool TsRestorePasteboard(NSPasteboard* pasteboard);

// Replaces what the pasteboard holds by the contents of a PNG, JPEG or GIF file. A file of another kind leaves the
// pasteboard as it is.
[[nodiscard]] bool TsWriteFileContents(NSPasteboard* pasteboard, NSString* path);

// The strings that the pasteboard's items have for a type.
[[nodiscard]] NSArray* TsStringsOfPasteboardType(NSPasteboard* pasteboard, NSString* type);

// What people last searched for, in any application; nil when they haven't.
[[nodiscard]] NSString* TsGetFindStringFromPasteboard();
void TsSetFindStringToPasteboard(NSString* string);
