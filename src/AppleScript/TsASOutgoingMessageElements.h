#pragma once

#include "Base/Ref.h"
#import "Platform/Cocoa.h"

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
