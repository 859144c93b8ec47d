#pragma once

#import <Foundation/NSString.h>

// The application's entry in the PDF menu of the print panel: an alias of its bundle in a folder of the user's.
@interface TsPDFServices : NSObject

+ (instancetype)sharedInstance;

@property(readonly) NSString* pdfServicesPath;

// Makes the entry, or points it at this copy of the application. Does nothing for a process without a bundle
// identifier.
- (void)install;

// Removes the entry, and the folder when nothing else is in it.
- (void)uninstall;

// Removes every alias of any copy of this application, or of its previous major version.
- (void)removeBookmarksToOurselves;

@end
