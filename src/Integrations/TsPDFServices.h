#pragma once

#import <Foundation/NSString.h>

// The application's entry among the services for PDF documents of the print panel: an alias of its bundle in a folder
// of the user's.
@interface TsPDFServices : NSObject

+ (instancetype)sharedInstance;

@property(readonly) NSString* pdfServicesPath;

// Makes the entry, which leads to this copy of the application from then on. A process that is no application has none.
- (void)install;

// Removes the entry, and the folder when nothing else is in it.
- (void)uninstall;

// Removes what leads to any copy of this application, or to its previous version.
- (void)removeBookmarksToOurselves;

@end
