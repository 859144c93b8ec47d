#include "CompositionProbe.h"

#import "AppleScript/NSApplication+AS.h"
#import "AppleScript/TsASOutgoingMessage.h"
#include "Base/TsString.h"
#include "Platform/Services.h"
#include "Probe.h"
#include "Services/TsServicesProvider.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"

namespace {

// defaults(): a new message, as it is.
void defaults(ProbeArguments args) {
  @autoreleasepool {
    auto message = Adopt([[TsASOutgoingMessage alloc] init]);
    NSMutableDictionary* values = [NSMutableDictionary dictionary];
    for (NSString* key in @[
           @"directlySend", @"optimizeAttachments", @"didSetOptimizeAttachments", @"toRecipients", @"ccRecipients",
           @"bccRecipients", @"mailAttachments", @"id", @"sender", @"subject", @"content", @"imageAttachMethod",
           @"imageFileType", @"imageSize"
         ]) {
      [values setObject:TsSanitizeValue([message.get() valueForKey:key]) forKey:key];
    }
    const auto recipient = Adopt([[TsASOutgoingMessageRecipient alloc] init]);
    const auto attachment = Adopt([[TsASOutgoingMessageAttachment alloc] init]);
    [values setObject:@[ [recipient name], [recipient address], [attachment path] ] forKey:@"elements"];
    [values setObject:TsSanitizeValue([[message messageSignature] name]) forKey:@"signature"];
    ReturnJSON(args, values);
  }
}

// composeAttributed(text): composes a message with rich text.
void composeAttributed(ProbeArguments args) {
  @autoreleasepool {
    auto message = Adopt([[TsASOutgoingMessage alloc] init]);
    NSDictionary* attributes = @{@"Weight" : @"bold"};
    [message setContent:Adopt([[NSAttributedString alloc] initWithString:convertToNSString(args[0])
                                                              attributes:attributes])];
    [message handleComposeScriptCommand:nil];
  }
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

// specifiers(): whether specifiers are right after setting, inserting, removing.
void specifiers(ProbeArguments args) {
  @autoreleasepool {
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
    ReturnJSON(args, @[ @(int{whenSet}), @(int{whenInserted}), @(int{whenRemoved}) ]);
  }
}

// path(text): what an attachment makes of it.
void path(ProbeArguments args) {
  @autoreleasepool {
    const auto attachment = Adopt([[TsASOutgoingMessageAttachment alloc] init]);
    [attachment setPath:convertToNSString(args[0])];
    ReturnJSON(args, @[ TsSanitizeValue([attachment path]) ]);
  }
}

void messageCount(ProbeArguments args) {
  args.GetReturnValue().Set(static_cast<double>([[NSApp outgoingMessages] count]));
}

// replaceMessages(): whether the list stays the same object, and holds what it is set to, be that itself.
void replaceMessages(ProbeArguments args) {
  @autoreleasepool {
    NSMutableArray* list = [NSApp outgoingMessages];
    const NSUInteger count = [list count];
    [NSApp setOutgoingMessages:list];
    const bool isKept = [list count] == count;
    [NSApp setOutgoingMessages:@[]];
    args.GetReturnValue().Set(isKept && [list count] == 0 && [NSApp outgoingMessages] == list);
  }
}

// serve(method, type, value): lets the provider work on a pasteboard that has the JSON value (a text, or a list), or
// nothing for null. Gives the error, and what the pasteboard has then.
void serve(ProbeArguments args) {
  @autoreleasepool {
    NSPasteboard* pasteboard = [NSPasteboard pasteboardWithUniqueName];
    NSString* type = convertToNSString(args[1]);
    if (!args[2]->IsNull()) {
      [pasteboard declareTypes:@[ type ] owner:nil];
      id value = [TsConvertFromJSONString(convertToNSString(args[2]), nullptr) objectAtIndex:0];
      if ([value isKindOfClass:[NSString class]]) {
        [pasteboard setString:value forType:type];
      } else {
        [pasteboard setPropertyList:value forType:type];
      }
    }
    const auto provider = Adopt([[TsServicesProvider alloc] init]);
    NSString* error = nil;
    using Serve = void (*)(id, SEL, NSPasteboard*, NSString*, NSString**);
    const SEL selector = NSSelectorFromString([convertToNSString(args[0]) stringByAppendingString:@":userData:error:"]);
    reinterpret_cast<Serve>([provider methodForSelector:selector])(provider, selector, pasteboard, nil, &error);
    ReturnJSON(args, @[
      TsSanitizeValue(error), TsSanitizeValue([pasteboard stringForType:NSStringPboardType]),
      [NSArray arrayWithArray:[pasteboard types]]
    ]);
  }
}

// performWithFiles(service, paths): uses another application's service, as its Services menu would.
void performWithFiles(ProbeArguments args) {
  @autoreleasepool {
    NSPasteboard* pasteboard = [NSPasteboard pasteboardWithUniqueName];
    [pasteboard declareTypes:@[ NSFilenamesPboardType ] owner:nil];
    [pasteboard setPropertyList:TsConvertFromJSONString(convertToNSString(args[1]), nullptr)
                        forType:NSFilenamesPboardType];
    const auto performed =
        tessaro::platform::PerformService(TsStdString(convertToNSString(args[0])), TsStdString([pasteboard name]));
    ReturnJSON(args, @[ performed ? @"" : TsNSString(performed.error().message) ]);
  }
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
