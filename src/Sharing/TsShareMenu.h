#pragma once

#import <Foundation/NSGeometry.h>
#import <Foundation/NSString.h>

@class NSArray;
@class NSWindow;

// Offers, in a menu below `rectangle`, what the desktop has to pass files on to: mail programs, Bluetooth, and
// applications that open all of them. The one that is chosen is started with the files. The rectangle is in the page's
// coordinates: points of the window's content, counted from its upper left. The menu opens on a later turn of the main
// queue; files that aren't there are left out, with a warning.
void TsShareFiles(NSWindow* window, NSArray* paths, NSRect rectangle);
