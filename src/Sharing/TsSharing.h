#pragma once

#import <Foundation/NSString.h>

@class NSArray;
@class NSDictionary;
@class NSWindow;

// Lets the user hand files to another application, chosen beside `place`: "x", "y", "width" and "height" in points of
// the window's content, from its upper left. Files that don't exist are left out, with a warning.
void TsShareFiles(NSWindow* window, NSArray* paths, NSDictionary* place);
