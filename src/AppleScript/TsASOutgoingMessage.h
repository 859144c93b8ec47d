#pragma once

#include <cstdint>
#include <string>

#include "Base/Ref.h"
#include "Base/Result.h"
#import "Platform/Cocoa.h"

// Posted to compose a message, without an object. User information: two dictionaries, under the "message" key (with
// "sender", "subject", "body", "to", "cc", "bcc" and "attachment-paths") and the "options" key (keys below).
extern NSString* const TsComposeOutgoingMessageNotification;
extern NSString* const TsComposeOutgoingMessageNotificationMessageKey;
extern NSString* const TsComposeOutgoingMessageNotificationOptionsKey;
extern NSString* const TsComposeOutgoingMessageNotificationDirectlySendKey;
extern NSString* const TsComposeOutgoingMessageNotificationOptimizeAttachmentKey;
extern NSString* const TsComposeOutgoingMessageNotificationImageAttachMethodKey;
extern NSString* const TsComposeOutgoingMessageNotificationImageSizeKey;
extern NSString* const TsComposeOutgoingMessageNotificationImageFileTypeKey;

// The elements of a scripted message, which gives recipients and attachments their specifiers.

@interface TsASOutgoingMessageRecipient : NSObject {
  Ref<NSString> _address;
  Ref<NSString> _name;
  Ref<NSScriptObjectSpecifier> _objectSpecifier;
}

@property(nonatomic, copy) NSString* address;
@property(nonatomic, copy) NSString* name;
@property(nonatomic, retain) NSScriptObjectSpecifier* objectSpecifier;

@end

@interface TsASOutgoingMessageAttachment : NSObject {
  Ref<NSString> _path;
  Ref<NSScriptObjectSpecifier> _objectSpecifier;
}

// Paths with a leading tilde and classic paths with colons are stored as POSIX paths.
@property(nonatomic, copy) NSString* path;
@property(nonatomic, retain) NSScriptObjectSpecifier* objectSpecifier;

@end

@interface TsASOutgoingMessageSignature : NSObject {
  Ref<NSString> _name;
  Ref<NSString> _content;
}

@property(nonatomic, copy) NSString* name;
@property(nonatomic, copy) NSString* content;

@end

// A message that another application creates and that the user completes in a compose window. Its properties and
// elements are those of the application's scripting dictionary. Main thread only.
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

// Send without showing the compose window.
@property(nonatomic) BOOL directlySend;
@property(nonatomic) BOOL optimizeAttachments;
// Whether a script has set `optimizeAttachments`.
@property(nonatomic) BOOL didSetOptimizeAttachments;
@property(nonatomic, retain) NSMutableArray* toRecipients;
@property(nonatomic, retain) NSMutableArray* ccRecipients;
@property(nonatomic, retain) NSMutableArray* bccRecipients;
@property(nonatomic, retain) NSMutableArray* mailAttachments;
// Unique in the process; the first message has 0.
@property(nonatomic) int64_t id;
@property(nonatomic, copy) NSString* sender;
@property(nonatomic, copy) NSString* subject;
// A string, or an attributed one.
@property(nonatomic, retain) id content;
// Passed on unchanged; nil at first.
@property(nonatomic, copy) NSString* imageAttachMethod;
@property(nonatomic, copy) NSString* imageFileType;
@property(nonatomic, copy) NSString* imageSize;
// Accepted, but not passed on.
@property(nonatomic, retain) TsASOutgoingMessageSignature* messageSignature;

// All messages of the process; none is ever removed.
+ (NSMutableArray*)outgoingMessages;

- (NSScriptObjectSpecifier*)objectSpecifier;

// Composes the message in a second, so that the script has time to complete it. NO does nothing.
- (void)setVisible:(BOOL)visible;

// Composes the message as it is now. Gives nil.
- (id)handleComposeScriptCommand:(NSScriptCommand*)command;

@end

// Composes the message that a mailto link describes, as a script would; fails when the link is refused. Main thread
// only.
[[nodiscard]] Result<void> TsComposeMailtoLink(const std::string& link);
