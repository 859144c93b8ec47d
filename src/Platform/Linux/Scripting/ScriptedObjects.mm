#include "Platform/Linux/Scripting/ScriptedObjects.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

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

// Elements have these properties in the application's scripting dictionary.
struct ElementType {
  NSString* className;
  std::array<std::string_view, 2> properties;
};

const ElementType kAttachment = {@"TsASOutgoingMessageAttachment", {"path"}};
const ElementType kSignature = {@"TsASOutgoingMessageSignature", {"name", "content"}};
const ElementType kRecipient = {@"TsASOutgoingMessageRecipient", {"address", "name"}};

const ElementType& TypeOf(std::string_view key) {
  if (key == "mailAttachments") return kAttachment;
  return key == "messageSignature" ? kSignature : kRecipient;
}

bool HasProperty(const ElementType& type, std::string_view name) {
  return !name.empty() && std::find(type.properties.begin(), type.properties.end(), name) != type.properties.end();
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

id Find(Object object) {
  return object ? [NSApp valueInOutgoingMessagesWithUniqueID:[NSNumber numberWithLongLong:*object]] : NSApp;
}

Element ElementFrom(const ElementType& type, id object) {
  Element element;
  for (const std::string_view name : type.properties) {
    if (name.empty()) continue;
    if (NSString* text = As<NSString>([object valueForKey:TsNSString(name)]))
      element[std::string(name)] = TsStdString(text);
  }
  return element;
}

Value ValueFrom(const ElementType& type, id object) {
  if (NSString* text = As<NSString>(object)) return TsStdString(text);
  if (NSAttributedString* text = As<NSAttributedString>(object)) return TsStdString([text string]);
  if (NSNumber* number = As<NSNumber>(object)) return std::int64_t{[number longLongValue]};
  if (NSArray* objects = As<NSArray>(object)) {
    std::vector<Element> elements;
    for (id each in objects) elements.push_back(ElementFrom(type, each));
    return elements;
  }
  return object != nil ? Value(ElementFrom(type, object)) : Value();
}

// Key-value coding would take most of the time of a message to thousands of recipients.
SEL SetterOf(std::string name) {
  name.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(name.front())));
  return sel_registerName(("set" + name + ":").c_str());
}

struct ToObject {
  const char* key;

  id operator()(std::monostate) const { return nil; }
  id operator()(bool value) const { return [NSNumber numberWithBool:value]; }
  id operator()(std::int64_t value) const { return [NSNumber numberWithLongLong:value]; }
  id operator()(const std::string& value) const { return TsNSString(value); }

  id operator()(const Element& element) const {
    auto object = Adopt<NSObject>([[NSClassFromString(TypeOf(key).className) alloc] init]);
    for (const auto& [name, text] : element) {
      [object.get() performSelector:SetterOf(name) withObject:text ? TsNSString(*text) : nil];
    }
    return object.Autoreleased();
  }

  id operator()(const std::vector<Element>& elements) const {
    NSMutableArray* objects = [NSMutableArray arrayWithCapacity:elements.size()];
    for (const Element& element : elements) [objects addObject:(*this)(element)];
    return objects;
  }
};

}  // namespace

std::string ApplicationName() { return TsStdString([[NSProcessInfo processInfo] processName]); }

std::string ApplicationIdentifier() { return TsStdString([[NSBundle mainBundle] bundleIdentifier]); }

std::vector<std::int64_t> MessageIds() {
  std::vector<std::int64_t> ids;
  for (NSNumber* number in [[NSApp valueForKey:kMessagesKey] valueForKey:@"id"]) ids.push_back([number longLongValue]);
  return ids;
}

bool HasMessage(std::int64_t id_) { return Find(id_) != nil; }

std::optional<std::int64_t> MakeMessage() {
  if (NSApp == nil) return std::nullopt;
  auto message = Adopt<NSObject>([[NSClassFromString(kMessageClass) alloc] init]);
  [[NSApp mutableArrayValueForKey:kMessagesKey] addObject:message.get()];
  return [[message.get() valueForKey:@"id"] longLongValue];
}

Result<void> ComposeMessage(std::int64_t id_) {
  return Attempt([&] { [Find(id_) handleComposeScriptCommand:nil]; });
}

Value Get(Object object, const char* key) {
  @try {
    return ValueFrom(TypeOf(key), [Find(object) valueForKey:TsNSString(key)]);
  } @catch (NSException*) {
    return {};
  }
}

Result<void> Set(Object object, const char* key, const Value& value) {
  return Attempt([&] { [Find(object) setValue:std::visit(ToObject{key}, value) forKey:TsNSString(key)]; });
}

Result<void> AddElement(std::int64_t message, const char* key, const Element& element) {
  return Attempt([&] { [[Find(message) mutableArrayValueForKey:TsNSString(key)] addObject:ToObject{key}(element)]; });
}

Result<void> CheckElement(const char* key, const Element& element) {
  for (const auto& [name, text] : element) {
    if (!HasProperty(TypeOf(key), name)) return Fail("There is no property " + name);
  }
  return {};
}

}  // namespace tessaro::platform::scripted
