#pragma once

#import <AppKit/NSWindowController.h>

#include "Base/Ref.h"

@class NSArray;
@class NSButton;
@class NSMutableArray;
@class NSString;
@class NSTableView;
@class NSTextField;
@class NSTextView;

// What the window begins with; nil for nothing.
struct TsSupportMessage {
  NSString* name = nil;
  NSString* email = nil;
  NSString* subject = nil;
  NSString* message = nil;
  NSArray* attachments = nil;
};

// The window in which a person writes to the people who make the application. There is one of it. What is sent goes to
// the host, as the notification "TsSupportAndFeedbackMessageNotification"; its user information has the texts "name",
// "email", "subject" and "message", "attachments", the JSON text of an array of paths, and, if the person lets it come
// along, "log", the path of the log file.
@interface TsSupportWindow : NSWindowController {
  NSTextField* _name;
  NSTextField* _email;
  NSTextField* _subject;
  NSTextView* _message;
  NSTableView* _attachmentList;
  NSButton* _remove;
  NSButton* _attachLog;
  NSButton* _send;
  Ref<NSMutableArray> _attachments;
}

+ (instancetype)sharedInstance;

// Shows the window with these contents. One that is open keeps what the person has written, gets the attachments, and
// comes to the front.
- (void)openWith:(const TsSupportMessage&)contents;

// Adds files, and shows the window. Those that aren't there, and folders, are left out, with a warning.
- (void)attachFiles:(NSArray*)paths;

- (IBAction)send:(id)sender;
- (IBAction)cancel:(id)sender;
- (IBAction)chooseAttachments:(id)sender;
- (IBAction)removeAttachments:(id)sender;

@end
