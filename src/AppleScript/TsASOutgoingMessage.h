#pragma once

#include <cstdint>

#import "AppleScript/TsASOutgoingMessageElements.h"

@class NSArray, NSMutableArray, NSScriptCommand;

// Posted when a message is to be composed, without an object. User information: two dictionaries, under the "message"
// and the "options" key, whose keys are below or, for the message, "sender", "subject", "body", "to", "cc", "bcc" and
// "attachment-paths".
extern NSString* const TsComposeOutgoingMessageNotification;
extern NSString* const TsComposeOutgoingMessageNotificationMessageKey;
extern NSString* const TsComposeOutgoingMessageNotificationOptionsKey;
extern NSString* const TsComposeOutgoingMessageNotificationDirectlySendKey;
extern NSString* const TsComposeOutgoingMessageNotificationOptimizeAttachmentKey;
extern NSString* const TsComposeOutgoingMessageNotificationImageAttachMethodKey;
extern NSString* const TsComposeOutgoingMessageNotificationImageSizeKey;
extern NSString* const TsComposeOutgoingMessageNotificationImageFileTypeKey;

// The value, or NSNull in its place: what dictionaries can hold, and JSON writes as null.
[[nodiscard]] id TsSanitizeValue(id value);

// A message that another application has begun, and which the user is going to see in a compose window. Its properties
// and elements are those of the application's scripting dictionary. Main thread only.
@interface TsASOutgoingMessage : NSObject {
  BOOL _directlySend;
  BOOL _optimizeAttachments;
  BOOL _didSetOptimizeAttachments;
  Ref<NSMutableArray> _toRecipients;
  Ref<NSMutableArray> _ccRecipients;
  Ref<NSMutableArray> _bccRecipients;
  Ref<NSMutableArray> _mailAttachments;
  int64_t _id;
  Ref<NSString> _sender;
  Ref<NSString> _subject;
  Ref<NSObject> _content;
  Ref<NSString> _imageAttachMethod;
  Ref<NSString> _imageFileType;
  Ref<NSString> _imageSize;
  Ref<TsASOutgoingMessageSignature> _messageSignature;
}

// To be sent without showing the compose window.
@property(nonatomic) BOOL directlySend;
@property(nonatomic) BOOL optimizeAttachments;
// Whether somebody has decided on optimizing.
@property(nonatomic) BOOL didSetOptimizeAttachments;
@property(nonatomic, retain) NSMutableArray* toRecipients;
@property(nonatomic, retain) NSMutableArray* ccRecipients;
@property(nonatomic, retain) NSMutableArray* bccRecipients;
@property(nonatomic, retain) NSMutableArray* mailAttachments;
// 0 for the first message of the process, and never the same again.
@property(nonatomic) int64_t id;
@property(nonatomic, copy) NSString* sender;
@property(nonatomic, copy) NSString* subject;
// A string, or an attributed one.
@property(nonatomic, retain) id content;
// Handed on as they are; nil at first.
@property(nonatomic, copy) NSString* imageAttachMethod;
@property(nonatomic, copy) NSString* imageFileType;
@property(nonatomic, copy) NSString* imageSize;
// Accepted, and not handed on.
@property(nonatomic, retain) TsASOutgoingMessageSignature* messageSignature;

// Every message of the process that scripts can still reach.
+ (NSMutableArray*)outgoingMessages;

- (NSScriptObjectSpecifier*)objectSpecifier;

// Composes the message in a second, so that the script has time to complete it. NO does nothing.
- (void)setVisible:(BOOL)visible;

// Composes the message as it is now. Gives nil.
- (id)handleComposeScriptCommand:(NSScriptCommand*)command;

@end
