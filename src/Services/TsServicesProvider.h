#pragma once

#import "Platform/Cocoa.h"

// Posted when another application wants to search for what is selected in it; the object is the text.
extern NSString* const TsServiceProviderSearchNotification;

// What the Services menus of other applications offer in the name of this one. Each method works on the pasteboard that
// the other application has filled, and explains by the error what it misses there. Texts are answered by an empty one.
@interface TsServicesProvider : NSObject

- (void)searchSelection:(NSPasteboard*)pasteboard userData:(NSString*)userData error:(NSString**)error;

// These compose a message: of a text, with files, and to an address.
- (void)mailSelection:(NSPasteboard*)pasteboard userData:(NSString*)userData error:(NSString**)error;
- (void)mailDocument:(NSPasteboard*)pasteboard userData:(NSString*)userData error:(NSString**)error;
- (void)mailTo:(NSPasteboard*)pasteboard userData:(NSString*)userData error:(NSString**)error;

@end

// Offers the module's services to other applications in the name of `application`.
void TsRegisterServicesProvider(NSApplication* application);

// Has another application's service work on the text; what comes of it stays with that application.
void TsPerformService(NSString* serviceName, NSString* text);
