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

// The initial contents; nil for an empty field.
struct TsSupportMessage {
  NSString* name = nil;
  NSString* email = nil;
  NSString* subject = nil;
  NSString* message = nil;
  NSArray* attachments = nil;
};

// The support and feedback window. Sending posts "TsSupportAndFeedbackMessageNotification" for the host; its user
// information has the texts "name", "email", "subject" and "message", "attachments", the JSON text of an array of
// paths, and, if the user agrees, "log", the path of the log file. Main thread only.
@interface TsSupportWindow : NSWindowController {
  NSTextField* _name;
  NSTextField* _email;
  NSTextField* _subject;
  NSTextView* _message;
  NSTableView* _attachmentList;
  NSButton* _attach;
  NSButton* _remove;
  NSButton* _attachLog;
  NSButton* _cancel;
  NSButton* _send;
  Ref<NSMutableArray> _attachments;
}

+ (instancetype)sharedInstance;

// Shows the window with these contents. If it is open already, it keeps its texts, gets the attachments, and comes to
// the front.
- (void)openWith:(const TsSupportMessage&)contents;

// Adds files, and shows the window. Folders and missing files are left out, with a warning.
- (void)attachFiles:(NSArray*)paths;

- (IBAction)send:(id)sender;
- (IBAction)cancel:(id)sender;
- (IBAction)chooseAttachments:(id)sender;
- (IBAction)removeAttachments:(id)sender;

@end
