#pragma once

#include "Base/Ref.h"
#import "Platform/Cocoa.h"

// What a scripted message consists of. The message gives recipients and attachments their specifiers.

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

// Set to a path with a leading tilde, or to a classic path with colons, it becomes the POSIX path of that.
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
