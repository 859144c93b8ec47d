#include "Platform/Linux/Scripting/ScriptedObjects.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsString.h"

@interface NSApplication (ScriptedMessages)
- (id)valueInOutgoingMessagesWithUniqueID:(NSNumber*)uniqueId;
@end

@interface NSObject (ScriptedMessages)
- (id)handleComposeScriptCommand:(NSScriptCommand*)command;
@end

namespace tessaro::platform::scripted {

namespace {

NSString* const kMessagesKey = @"outgoingMessages";
NSString* const kMessageClass = @"TsASOutgoingMessage";

// The properties of elements in the application's scripting dictionary; scripts reach no others.
struct ElementProperty {
  std::string_view name;
  SEL setter;
};

struct ElementType {
  NSString* className;
  std::vector<ElementProperty> properties;
};

const ElementType& TypeOf(std::string_view key) {
  static Forever<ElementType> attachment(
      ElementType{@"TsASOutgoingMessageAttachment", {{"path", @selector(setPath:)}}});
  static Forever<ElementType> signature(ElementType{
      @"TsASOutgoingMessageSignature", {{"name", @selector(setName:)}, {"content", @selector(setContent:)}}});
  static Forever<ElementType> recipient(ElementType{
      @"TsASOutgoingMessageRecipient", {{"address", @selector(setAddress:)}, {"name", @selector(setName:)}}});
  if (key == "mailAttachments") return *attachment;
  if (key == "messageSignature") return *signature;
  return *recipient;
}

// nullptr when elements have no such property.
const ElementProperty* Property(const ElementType& type, std::string_view name) {
  const auto found = std::find_if(type.properties.begin(), type.properties.end(),
                                  [&](const ElementProperty& property) { return property.name == name; });
  return found != type.properties.end() ? &*found : nullptr;
}

struct ToObject {
  id operator()(std::monostate) const { return nil; }
  id operator()(bool value) const { return [NSNumber numberWithBool:value]; }
  id operator()(std::int64_t value) const { return [NSNumber numberWithLongLong:value]; }
  id operator()(const std::string& value) const { return TsNSString(value); }
};

id Object(const Value& value) { return std::visit(ToObject(), value); }

Value FromObject(id object) {
  if (NSString* text = As<NSString>(object)) return TsStdString(text);
  if (NSAttributedString* text = As<NSAttributedString>(object)) return TsStdString([text string]);
  if (NSNumber* number = As<NSNumber>(object)) return std::int64_t{[number longLongValue]};
  return {};
}

// Runs `work`; an exception is its failure.
template <typename Work>
Result<void> Attempt(const Work& work) {
  @try {
    work();
    return {};
  } @catch (NSException* exception) {
    return Fail(TsStdString([NSString stringWithFormat:@"%@: %@", [exception name], [exception reason]]));
  }
}

NSNumber* Number(std::int64_t value) { return [NSNumber numberWithLongLong:value]; }

id Message(std::int64_t id_) { return [NSApp valueInOutgoingMessagesWithUniqueID:Number(id_)]; }

Value ValueOf(id object, const char* key) {
  @try {
    return FromObject([object valueForKey:TsNSString(key)]);
  } @catch (NSException*) {
    return {};
  }
}

Result<void> SetValueOf(id object, const char* key, const Value& value) {
  return Attempt([&] { [object setValue:Object(value) forKey:TsNSString(key)]; });
}

// Calls the setters: key-value coding takes most of the time of a message to thousands of recipients.
Ref<NSObject> NewElement(const ElementType& type, Class elementClass, const Element& properties) {
  auto element = Adopt<NSObject>([[elementClass alloc] init]);
  for (const auto& [name, value] : properties) {
    const ElementProperty* property = Property(type, name);
    if (property != nullptr) [element.get() performSelector:property->setter withObject:Object(value)];
  }
  return element;
}

Ref<NSObject> NewElement(const char* key, const Element& properties) {
  const ElementType& type = TypeOf(key);
  return NewElement(type, NSClassFromString(type.className), properties);
}

Element ElementOf(const char* key, id object) {
  Element element;
  for (const ElementProperty& property : TypeOf(key).properties) {
    std::string name(property.name);
    Value value = ValueOf(object, name.c_str());
    if (!std::holds_alternative<std::monostate>(value)) element.emplace_back(std::move(name), std::move(value));
  }
  return element;
}

}  // namespace

std::string ApplicationName() { return TsStdString([[NSProcessInfo processInfo] processName]); }

std::string ApplicationIdentifier() { return TsStdString([[NSBundle mainBundle] bundleIdentifier]); }

Value ApplicationProperty(const char* key) { return ValueOf(NSApp, key); }

Result<void> SetApplicationProperty(const char* key, const Value& value) { return SetValueOf(NSApp, key, value); }

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

Result<void> ComposeMessage(std::int64_t id_) {
  return Attempt([&] { [Message(id_) handleComposeScriptCommand:nil]; });
}

Value MessageProperty(std::int64_t id_, const char* key) { return ValueOf(Message(id_), key); }

Result<void> SetMessageProperty(std::int64_t id_, const char* key, const Value& value) {
  return SetValueOf(Message(id_), key, value);
}

Result<void> CheckElement(const char* key, const Element& element) {
  for (const auto& [name, value] : element) {
    if (Property(TypeOf(key), name) == nullptr) return Fail("There is no property " + name);
    const bool isText = std::holds_alternative<std::string>(value) || std::holds_alternative<std::monostate>(value);
    if (!isText) return Fail(name + " is of the type s");
  }
  return {};
}

std::vector<Element> MessageElements(std::int64_t id_, const char* key) {
  std::vector<Element> elements;
  for (id object in [Message(id_) valueForKey:TsNSString(key)]) elements.push_back(ElementOf(key, object));
  return elements;
}

Result<void> SetMessageElements(std::int64_t id_, const char* key, const std::vector<Element>& elements) {
  return Attempt([&] {
    NSMutableArray* objects = [NSMutableArray arrayWithCapacity:elements.size()];
    const ElementType& type = TypeOf(key);
    const Class elementClass = NSClassFromString(type.className);
    for (const Element& element : elements) [objects addObject:NewElement(type, elementClass, element).get()];
    [Message(id_) setValue:objects forKey:TsNSString(key)];
  });
}

Result<void> AddMessageElement(std::int64_t id_, const char* key, const Element& element) {
  return Attempt(
      [&] { [[Message(id_) mutableArrayValueForKey:TsNSString(key)] addObject:NewElement(key, element).get()]; });
}

Element MessageElement(std::int64_t id_, const char* key) {
  return ElementOf(key, [Message(id_) valueForKey:TsNSString(key)]);
}

Result<void> SetMessageElement(std::int64_t id_, const char* key, const Element& element) {
  return Attempt([&] { [Message(id_) setValue:NewElement(key, element).get() forKey:TsNSString(key)]; });
}

}  // namespace tessaro::platform::scripted
