#pragma once

#import "Platform/Cocoa.h"

// Posted when another application asks to search for its selection; the object is the text.
extern NSString* const TsServiceProviderSearchNotification;

// The services that other applications offer in their Services menus for this one. Each method reads the pasteboard
// that the other application has filled; the error names what is missing there. The reply to a text is an empty text.
@interface TsServicesProvider : NSObject

- (void)searchSelection:(NSPasteboard*)pasteboard userData:(NSString*)userData error:(NSString**)error;

// Compose a message: with a text, with files, to an address.
- (void)mailSelection:(NSPasteboard*)pasteboard userData:(NSString*)userData error:(NSString**)error;
- (void)mailDocument:(NSPasteboard*)pasteboard userData:(NSString*)userData error:(NSString**)error;
- (void)mailTo:(NSPasteboard*)pasteboard userData:(NSString*)userData error:(NSString**)error;

@end

// Offers the module's services to other applications in the name of `application`.
void TsRegisterServicesProvider(NSApplication* application);

// Runs another application's service on the text and ignores its answer.
void TsPerformService(NSString* serviceName, NSString* text);
