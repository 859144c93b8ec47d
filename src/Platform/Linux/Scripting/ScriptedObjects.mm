#include "Platform/Linux/Scripting/ScriptedObjects.h"

#import <AppKit/AppKit.h>

#include "Base/Ref.h"

@interface NSApplication (ScriptedMessages)
- (id)valueInOutgoingMessagesWithUniqueID:(NSNumber*)uniqueId;
@end

@interface NSObject (ScriptedMessages)
- (id)handleComposeScriptCommand:(NSScriptCommand*)command;
@end

namespace tessaro::platform::scripted {

namespace {

// From the application's scripting dictionary.
NSString* const kMessagesKey = @"outgoingMessages";
NSString* const kMessageClass = @"TsASOutgoingMessage";
NSString* const kAttachmentsKey = @"mailAttachments";
NSString* const kAttachmentClass = @"TsASOutgoingMessageAttachment";
NSString* const kRecipientClass = @"TsASOutgoingMessageRecipient";

NSString* Text(const std::string& text) { return [NSString stringWithUTF8String:text.c_str()]; }

std::string StdString(NSString* text) {
  NSData* utf8 = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
  return {static_cast<const char*>([utf8 bytes]), [utf8 length]};
}

struct ToObject {
  id operator()(std::monostate) const { return nil; }
  id operator()(bool value) const { return [NSNumber numberWithBool:value]; }
  id operator()(std::int64_t value) const { return [NSNumber numberWithLongLong:value]; }
  id operator()(const std::string& value) const { return Text(value); }
};

id Object(const Value& value) { return std::visit(ToObject(), value); }

Value FromObject(id object) {
  if ([object isKindOfClass:[NSString class]]) return StdString(object);
  if ([object isKindOfClass:[NSAttributedString class]]) return StdString([object string]);
  if ([object isKindOfClass:[NSNumber class]]) return std::int64_t{[object longLongValue]};
  return {};
}

std::string Reason(NSException* exception) {
  return StdString([NSString stringWithFormat:@"%@: %@", [exception name], [exception reason]]);
}

NSNumber* Number(std::int64_t value) { return [NSNumber numberWithLongLong:value]; }

id Message(std::int64_t id_) { return [NSApp valueInOutgoingMessagesWithUniqueID:Number(id_)]; }

Value ValueOf(id object, const char* key) {
  @try {
    return FromObject([object valueForKey:Text(key)]);
  } @catch (NSException*) {
    return {};
  }
}

Failure SetValueOf(id object, const char* key, const Value& value) {
  @try {
    [object setValue:Object(value) forKey:Text(key)];
    return std::nullopt;
  } @catch (NSException* exception) {
    return Reason(exception);
  }
}

bool IsAttachment(NSString* elementsKey) { return [elementsKey isEqualToString:kAttachmentsKey]; }

NSArray* ElementKeys(NSString* elementsKey) {
  return IsAttachment(elementsKey) ? @[ @"path" ] : @[ @"address", @"name" ];
}

// Raises for a property that elements don't have.
Ref<NSObject> NewElement(NSString* elementsKey, const Element& properties) {
  const Class elementClass = NSClassFromString(IsAttachment(elementsKey) ? kAttachmentClass : kRecipientClass);
  auto element = Adopt<NSObject>([[elementClass alloc] init]);
  NSArray* keys = ElementKeys(elementsKey);
  for (const auto& [name, value] : properties) {
    NSString* key = Text(name);
    // Only what the dictionary has: a message's elements have more keys than scripts may reach.
    if (![keys containsObject:key]) [NSException raise:NSUndefinedKeyException format:@"There is no property %@", key];
    [element.get() setValue:Object(value) forKey:key];
  }
  return element;
}

}  // namespace

std::string ApplicationName() { return StdString([[NSProcessInfo processInfo] processName]); }

std::string ApplicationIdentifier() { return StdString([[NSBundle mainBundle] bundleIdentifier]); }

Value ApplicationProperty(const char* key) { return ValueOf(NSApp, key); }

Failure SetApplicationProperty(const char* key, const Value& value) { return SetValueOf(NSApp, key, value); }

std::vector<std::int64_t> MessageIds() {
  std::vector<std::int64_t> ids;
  for (NSNumber* number in [[NSApp valueForKey:kMessagesKey] valueForKey:@"id"]) ids.push_back([number longLongValue]);
  return ids;
}

bool HasMessage(std::int64_t id_) { return Message(id_) != nil; }

std::optional<std::int64_t> MakeMessage() {
  if (NSApp == nil) return std::nullopt;
  auto message = Adopt<NSObject>([[NSClassFromString(kMessageClass) alloc] init]);
  [[NSApp mutableArrayValueForKey:kMessagesKey] addObject:message.get()];
  return [[message.get() valueForKey:@"id"] longLongValue];
}

Failure ComposeMessage(std::int64_t id_) {
  @try {
    [Message(id_) handleComposeScriptCommand:nil];
    return std::nullopt;
  } @catch (NSException* exception) {
    return Reason(exception);
  }
}

Value MessageProperty(std::int64_t id_, const char* key) { return ValueOf(Message(id_), key); }

Failure SetMessageProperty(std::int64_t id_, const char* key, const Value& value) {
  return SetValueOf(Message(id_), key, value);
}

std::vector<Element> MessageElements(std::int64_t id_, const char* key) {
  std::vector<Element> elements;
  NSArray* keys = ElementKeys(Text(key));
  for (id object in [Message(id_) valueForKey:Text(key)]) {
    Element& element = elements.emplace_back();
    for (NSString* property in keys) {
      Value value = FromObject([object valueForKey:property]);
      if (!std::holds_alternative<std::monostate>(value)) element.emplace_back([property UTF8String], std::move(value));
    }
  }
  return elements;
}

Failure SetMessageElements(std::int64_t id_, const char* key, const std::vector<Element>& elements) {
  @try {
    NSString* elementsKey = Text(key);
    NSMutableArray* objects = [NSMutableArray arrayWithCapacity:elements.size()];
    for (const Element& element : elements) [objects addObject:NewElement(elementsKey, element).get()];
    [Message(id_) setValue:objects forKey:elementsKey];
    return std::nullopt;
  } @catch (NSException* exception) {
    return Reason(exception);
  }
}

Failure AddMessageElement(std::int64_t id_, const char* key, const Element& element) {
  @try {
    NSString* elementsKey = Text(key);
    [[Message(id_) mutableArrayValueForKey:elementsKey] addObject:NewElement(elementsKey, element).get()];
    return std::nullopt;
  } @catch (NSException* exception) {
    return Reason(exception);
  }
}

}  // namespace tessaro::platform::scripted
