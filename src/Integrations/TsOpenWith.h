#pragma once

#import <Foundation/NSString.h>

// Opens a file with the application at a path, and lets it come to the front. Any thread.
void TsOpenWith(NSString* path, NSString* applicationPath);
