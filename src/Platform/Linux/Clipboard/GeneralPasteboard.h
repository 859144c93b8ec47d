#pragma once

#import <AppKit/NSPasteboard.h>

// The general pasteboard of this process, which also is the X server's clipboard.
//
// GNUstep's pasteboard server knows texts, and keeps them for everybody. It gives other programs neither pictures nor
// HTML, takes none from them, is slow with large values and has no room for more than 32 MiB, and doesn't notice when
// the clipboard passes from one program to the next. So what another program offers is fetched from that program
// itself, piece by piece and only when it is asked for; and what the server isn't up to is offered by this process, for
// as long as it runs.
//
// A program that doesn't answer within some seconds raises NSPasteboardCommunicationException.
@interface TsGeneralPasteboard : NSPasteboard
@end
