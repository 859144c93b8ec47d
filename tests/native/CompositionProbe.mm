#import "AppleScript/NSApplication+AS.h"
#import "AppleScript/TsASOutgoingMessage.h"
#include "Base/TsString.h"
#include "Platform/Services.h"
#include "Probe.h"
#include "Services/TsServicesProvider.h"
#include "Utilities/TsJSON.h"

namespace {

// A new message, as it is.
id defaults() {
  auto message = Adopt([[TsASOutgoingMessage alloc] init]);
  NSMutableDictionary* values = [NSMutableDictionary dictionary];
  for (NSString* key in @[
         @"directlySend", @"optimizeAttachments", @"didSetOptimizeAttachments", @"toRecipients", @"ccRecipients",
         @"bccRecipients", @"mailAttachments", @"id", @"sender", @"subject", @"content", @"imageAttachMethod",
         @"imageFileType", @"imageSize", @"messageSignature.name"
       ]) {
    [values setObject:TsSanitizeValue([message.get() valueForKeyPath:key]) forKey:key];
  }
  const auto recipient = Adopt([[TsASOutgoingMessageRecipient alloc] init]);
  const auto attachment = Adopt([[TsASOutgoingMessageAttachment alloc] init]);
  [values setObject:@[ [recipient name], [recipient address], [attachment path] ] forKey:@"elements"];
  return values;
}

// Composes a message with rich text.
void composeAttributed(NSString* text) {
  auto message = Adopt([[TsASOutgoingMessage alloc] init]);
  [message setContent:Adopt([[NSAttributedString alloc] initWithString:text attributes:@{@"Weight" : @"bold"}])];
  [message handleComposeScriptCommand:nil];
}

// Whether every element of a message, and the message itself, is where its specifier says.
bool AreSpecified(TsASOutgoingMessage* message) {
  if ([[message objectSpecifier] objectsByEvaluatingSpecifier] != message) return false;
  for (NSString* key in @[ @"toRecipients", @"ccRecipients", @"bccRecipients", @"mailAttachments" ]) {
    for (id element in [message valueForKey:key]) {
      NSScriptObjectSpecifier* specifier = [element objectSpecifier];
      if (![[specifier key] isEqual:key] || [specifier objectsByEvaluatingSpecifier] != element) return false;
    }
  }
  return true;
}

NSMutableArray* New(Class elementClass, int count) {
  NSMutableArray* elements = [NSMutableArray array];
  while (count-- > 0) [elements addObject:Adopt<NSObject>([[elementClass alloc] init]).get()];
  return elements;
}

// Whether specifiers are right after setting, inserting, removing.
id specifiers() {
  auto message = Adopt([[TsASOutgoingMessage alloc] init]);
  [[NSApp mutableArrayValueForKey:@"outgoingMessages"] addObject:message.get()];
  [message setToRecipients:New([TsASOutgoingMessageRecipient class], 3)];
  [message setCcRecipients:New([TsASOutgoingMessageRecipient class], 2)];
  [message setBccRecipients:New([TsASOutgoingMessageRecipient class], 1)];
  [message setMailAttachments:New([TsASOutgoingMessageAttachment class], 2)];
  const bool whenSet = AreSpecified(message);
  NSMutableArray* recipients = [message.get() mutableArrayValueForKey:@"toRecipients"];
  [recipients insertObject:[New([TsASOutgoingMessageRecipient class], 1) lastObject] atIndex:1];
  const bool whenInserted = AreSpecified(message) && [[message toRecipients] count] == 4;
  [recipients removeObjectAtIndex:0];
  const bool whenRemoved = AreSpecified(message) && [[message toRecipients] count] == 3;
  return @[ Truth(whenSet), Truth(whenInserted), Truth(whenRemoved) ];
}

// The attachment's values for a path.
id path(NSString* text) {
  const auto attachment = Adopt([[TsASOutgoingMessageAttachment alloc] init]);
  [attachment setPath:text];
  return [attachment path];
}

int messageCount() { return static_cast<int>([[NSApp outgoingMessages] count]); }

// Whether the list stays the same object, and holds what it is set to, be that itself.
bool replaceMessages() {
  NSMutableArray* list = [NSApp outgoingMessages];
  const NSUInteger count = [list count];
  [NSApp setOutgoingMessages:list];
  const bool isKept = [list count] == count;
  [NSApp setOutgoingMessages:@[]];
  return isKept && [list count] == 0 && [NSApp outgoingMessages] == list;
}

// Lets the provider work on a pasteboard that has a text, a list, or nothing. Gives the error, and what the pasteboard
// has then.
id serve(NSString* method, NSString* type, id value) {
  NSPasteboard* pasteboard = [NSPasteboard pasteboardWithUniqueName];
  if (value != nil) [pasteboard declareTypes:@[ type ] owner:nil];
  if (NSString* text = As<NSString>(value)) {
    [pasteboard setString:text forType:type];
  } else if (value != nil) {
    [pasteboard setPropertyList:value forType:type];
  }
  const auto provider = Adopt([[TsServicesProvider alloc] init]);
  NSString* error = nil;
  using Serve = void (*)(id, SEL, NSPasteboard*, NSString*, NSString**);
  const SEL selector = NSSelectorFromString([method stringByAppendingString:@":userData:error:"]);
  reinterpret_cast<Serve>([provider methodForSelector:selector])(provider, selector, pasteboard, nil, &error);
  return @[
    TsSanitizeValue(error), TsSanitizeValue([pasteboard stringForType:NSStringPboardType]),
    [NSArray arrayWithArray:[pasteboard types]]
  ];
}

// Uses another application's service, as its Services menu would. Gives the reason of a failure.
std::string performWithFiles(std::string service, NSArray* paths) {
  NSPasteboard* pasteboard = [NSPasteboard pasteboardWithUniqueName];
  [pasteboard declareTypes:@[ NSFilenamesPboardType ] owner:nil];
  [pasteboard setPropertyList:paths forType:NSFilenamesPboardType];
  const auto performed = tessaro::platform::PerformService(service, TsStdString([pasteboard name]));
  return performed ? "" : performed.error().message;
}

}  // namespace

void AttachCompositionProbe(v8::Local<v8::Object> exports) {
  PROBE(defaults);
  PROBE(composeAttributed);
  PROBE(specifiers);
  PROBE(path);
  PROBE(messageCount);
  PROBE(replaceMessages);
  PROBE(serve);
  PROBE(performWithFiles);
}
